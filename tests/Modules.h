/* Loads a library. On POSIX its symbols are visible to the whole process. */
#pragma once

#include <stdint.h>

typedef void (*ModuleFunction)(void);

#if defined(_WIN32)

#include <windows.h>

static inline void* openModule(const char* path) { return LoadLibraryA(path); }
static inline ModuleFunction findFunction(void* module, const char* name) {
  return (ModuleFunction)GetProcAddress((HMODULE)module, name);
}
static inline void closeModule(void* module) { FreeLibrary((HMODULE)module); }

#else

#include <dlfcn.h>

static inline void* openModule(const char* path) { return dlopen(path, RTLD_NOW | RTLD_GLOBAL); }
static inline ModuleFunction findFunction(void* module, const char* name) {
  return (ModuleFunction)(uintptr_t)dlsym(module, name);
}
static inline void closeModule(void* module) { dlclose(module); }

#endif
