/* A provider of the second kind: a library with the product's own three exports, whose answers show
 * the key that was asked. */
#include <string.h>

#include "ZynSystemInfo.h"

static uint32_t answer(const void* bytes, uint64_t length, void* buffer, uint64_t* size) {
  const uint64_t offered = *size;
  *size = length;
  if (offered < length) {
    return INSUFFICIENT_SIZE;
  }
  memcpy(buffer, bytes, (size_t)length);
  return SUCCESS;
}

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 0;
  *minor = 1;
  return SUCCESS;
}

uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  static const char NAME[] = "Bittern 3000";
  const float real = (float)key / 2;
  const uint64_t number = component * 100 + key;
  if (component == GPU && key == 4) {
    return answer(NAME, sizeof NAME, buffer, size);
  }
  return component == DSP && (key == 43 || key == 44)
             ? answer(&real, sizeof real, buffer, size)
             : answer(&number, sizeof number, buffer, size);
}

uint32_t Soc_GetCapabilitySerialized(uint64_t component, uint64_t key, void* buffer,
                                     uint64_t* size) {
  const struct {
    uint32_t dsp, value;
    char name[32];
  } named = {0, 48, "forty-eight"};
  const uint32_t numbers[] = {0, (uint32_t)key, 0, (uint32_t)key + 1};
  char name[4 + 32] = {0};
  memcpy(name + 4, "forty-seven", 11);
  if (component != DSP) {
    return UNSUPPORTED_COMPONENT;
  }
  return key == 48   ? answer(&named, sizeof named, buffer, size)
         : key == 47 ? answer(name, sizeof name, buffer, size)
                     : answer(numbers, sizeof numbers, buffer, size);
}
