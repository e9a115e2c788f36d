/* A service-utilities provider for the tool's tests: every integer it answers is 100 times the
 * component plus the key, and its GPU has a hostile name. The environment variable DSP_FAULT, as in
 * "17 crash", says at which DSP key it is faulty and how; "0 unload" makes it crash on its way out.
 */
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ZynSystemInfo.h"

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 0;
  *minor = 1;
  return SUCCESS;
}

#ifndef WITHOUT_GET_CAPABILITY
/* The fault at this DSP key, or "". */
static const char* faultAt(uint64_t key) {
  const char* const setting = getenv("DSP_FAULT");
  char* fault = NULL;
  const bool here = setting != NULL && key == strtoull(setting, &fault, 10) && *fault == ' ';
  return here ? fault + 1 : "";
}

__attribute__((destructor)) static void onUnload(void) {
  if (strcmp(faultAt(0), "unload") == 0) {
    abort();
  }
}

uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
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
  const char* const fault = component == DSP ? faultAt(key) : "";
  if (strcmp(fault, "unanswered") == 0) {
    return UNSUPPORTED_KEY;
  }
  if (strcmp(fault, "narrow") == 0) {
    answerSize = 4;
  } else if (strcmp(fault, "print") == 0) {
    (void)puts("{\"step\": \"exit\"}");
    (void)fflush(stdout);
  } else if (strcmp(fault, "quit") == 0) {
    exit(0);
  } else if (strcmp(fault, "crash") == 0) {
    abort();
  } else if (strcmp(fault, "hang") == 0) {
    for (volatile int forever = 1; forever;) {
    }
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
