/* A service-utilities provider for the tool's tests: every integer it answers is 100 times the
 * component plus the key, its GPU has a hostile name, and it does not answer the DSP key that the
 * environment variable UNANSWERED_DSP_KEY names. */
#include <stdlib.h>
#include <string.h>

#include "ZynSystemInfo.h"

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 0;
  *minor = 1;
  return SUCCESS;
}

#ifndef WITHOUT_GET_CAPABILITY
uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  const char* const unanswered = getenv("UNANSWERED_DSP_KEY");
  if (component == DSP && unanswered != NULL && key == strtoull(unanswered, NULL, 10)) {
    return UNSUPPORTED_KEY;
  }
  const uint64_t list[] = {2, 7, 9};
  const char name[] = "\x1b[31m\xff";
  const float fraction = 0.1F;
  const uint64_t number = 100 * component + key;

  const void* answer = &number;
  uint64_t answerSize = sizeof number;
  if (component == DSP && key == 16) {
    answer = list;
    answerSize = sizeof list;
  } else if (component == DSP && (key == 43 || key == 44)) {
    answer = &fraction;
    answerSize = sizeof fraction;
  } else if (component == GPU && key == 4) {
    answer = name;
    answerSize = sizeof name;
  }
  if (*size < answerSize) {
    *size = answerSize;
    return INSUFFICIENT_SIZE;
  }
  memcpy(buffer, answer, answerSize);
  *size = answerSize;
  return SUCCESS;
}
#endif
