/* A library that answers as no build of this source does: every number is 9, every list empty. */
#include <string.h>

#include "ZynSystemInfo.h"

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 9;
  *minor = 9;
  return SOC_SUCCESS;
}

uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  (void)component;
  (void)key;
  memset(buffer, 0, *size);
  *(uint64_t*)buffer = 9;
  return SOC_SUCCESS;
}

uint32_t Soc_GetCapabilitySerialized(uint64_t component, uint64_t key, void* buffer,
                                     uint64_t* size) {
  (void)component;
  (void)key;
  (void)buffer;
  *size = 0;
  return SOC_SUCCESS;
}
