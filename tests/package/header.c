/* The public header in a program of C99, C++11 or later. Without the short names the program has
 * devices and, from its command line, macros of its own that are called so. It is only compiled. */
#ifdef ZYN_NO_SHORT_NAMES
enum DeviceType { CPU, GPU, DSP };
#define COMPONENT SOC_GPU
#define STATUS SOC_SUCCESS
#else
#define COMPONENT GPU
#define STATUS SUCCESS
#endif
#include <ZynSystemInfo.h>

uint32_t ask(Soc_GetCapabilityFn* query, Soc_GetCapabilitySerializedFn* list, uint64_t* value);
uint32_t ask(Soc_GetCapabilityFn* query, Soc_GetCapabilitySerializedFn* list, uint64_t* value) {
  uint64_t size = sizeof *value;
  uint8_t version[2] = {0, 0};
  Soc_GetAPIVersionFn* interface_version = Soc_GetAPIVersion;
  if (interface_version(&version[0], &version[1]) != SOC_SUCCESS ||
      list(SOC_DSP, 16, value, &size) == SOC_FAILURE) {
    return SOC_FAILURE;
  }
  query = query ? query : Soc_GetCapability;
  return query(COMPONENT, 1, value, &size) == STATUS ? 0U : 1U;
}
