/* A library for the platform tests: what it exports, and a call into a library that it needs. It
 * can be taken for a provider that refuses every query. */
#include <stdint.h>
#include <string.h>

#ifdef _WIN32
#define EXPORT __attribute__((dllexport))
#else
#define EXPORT __attribute__((visibility("default")))
#endif

EXPORT int fixtureNumber = 42;

EXPORT int fixtureLength(const char* text);
EXPORT uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor);
EXPORT uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size);

int fixtureLength(const char* text) { return (int)strlen(text); }

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
  *major = 0;
  *minor = 1;
  return 0;
}

uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer, uint64_t* size) {
  (void)component;
  (void)key;
  (void)buffer;
  *size = 0;
  return 25;
}
