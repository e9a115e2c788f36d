/* A library for the platform tests. */
#ifdef _WIN32
#define EXPORT __attribute__((dllexport))
#else
#define EXPORT __attribute__((visibility("default")))
#endif

EXPORT int fixtureNumber = 42;
