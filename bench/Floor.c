/* The least that a query could do: a call into another library that checks its pointer and stores 8
 * bytes. Loading this library is loading nothing. */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

__attribute__((visibility("default"))) uint32_t Soc_GetCapability(uint64_t component, uint64_t key,
                                                                  void* buffer, uint64_t* size);

uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  (void)component;
  (void)size;
  if (buffer == NULL) {
    return 7;
  }
  memcpy(buffer, &key, sizeof key);
  return 0;
}
