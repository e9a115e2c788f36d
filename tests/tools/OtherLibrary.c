/* A library that answers as no build of this source does: every number is 9. Some answers have no
 * valid form. */
#include <string.h>

#include "ZynSystemInfo.h"

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 9;
  *minor = 9;
  return SOC_SUCCESS;
}

uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  const uint64_t nine = 9;
  if (component == SOC_GPU && key == 4) {
    memset(buffer, 'x', *size); /* a name without a NUL */
    return SOC_SUCCESS;
  }
  memset(buffer, 0, *size);
  memcpy(buffer, &nine, *size < sizeof nine ? *size : sizeof nine);
  if (component == SOC_DSP && key == 2) {
    *size = 4; /* half a number */
  }
  return SOC_SUCCESS;
}

uint32_t Soc_GetCapabilitySerialized(uint64_t component, uint64_t key, void* buffer,
                                     uint64_t* size) {
  (void)component;
  memset(buffer, 'x', *size);
  switch (key) {
    case 16: /* no whole entry */
      *size = 7;
      break;
    case 47: /* an entry whose name has no NUL */
      *size = 36;
      break;
    case 48: /* more than memory holds */
      *size = UINT64_MAX;
      break;
    default: /* an empty list */
      *size = 0;
  }
  return SOC_SUCCESS;
}
