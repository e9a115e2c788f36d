/* A library for the platform tests: what it exports, and a call into a library that it needs. */
#include <string.h>

#ifdef _WIN32
#define EXPORT __attribute__((dllexport))
#else
#define EXPORT __attribute__((visibility("default")))
#endif

EXPORT int fixtureNumber = 42;

EXPORT int fixtureLength(const char* text);

int fixtureLength(const char* text) { return (int)strlen(text); }
