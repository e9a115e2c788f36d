/* The header must compile as C99, where its functions have these types. */
#include "ZynSystemInfo.h"

struct Library {
  uint32_t (*getApiVersion)(uint8_t*, uint8_t*);
  uint32_t (*getCapability)(uint64_t, uint64_t, void*, uint64_t*);
  uint32_t (*getCapabilitySerialized)(uint64_t, uint64_t, void*, uint64_t*);
};

extern const struct Library libraryInC;
const struct Library libraryInC = {Soc_GetAPIVersion, Soc_GetCapability,
                                   Soc_GetCapabilitySerialized};
