#include "DynamicSocInfo/provider/DynamicLibrary.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <span>
#include <type_traits>

#include "platform/WindowsApi.h"

namespace {

thread_local const char* dlLastError = nullptr;

/// The modules that `DL_DEFAULT` lookups pass over.
std::set<void*> localModules;

/// Stores a failure's message. Returns null, which is the result of most operations then.
std::nullptr_t fail(const char* message) {
  dlLastError = message;
  return nullptr;
}

struct ReleaseModule {
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
using ModuleReference = std::unique_ptr<std::remove_pointer_t<HMODULE>, ReleaseModule>;

/// The size in bytes of the process's module list.
std::optional<DWORD> moduleListSize() {
  DWORD size = 0;
  const BOOL done = K32EnumProcessModules(GetCurrentProcess(), nullptr, 0, &size);
  return done != FALSE ? std::optional(size) : std::nullopt;
}

void* addressOf(HMODULE module, const char* symbolName) {
  return reinterpret_cast<void*>(GetProcAddress(module, symbolName));
}

/// The symbol of the first visible module that has it, or else the platform's own default.
void* findInVisibleModules(std::span<const HMODULE> modules, const char* symbolName) {
  for (const HMODULE module : modules) {
    if (!localModules.contains(module)) {
      if (void* const address = addressOf(module, symbolName)) {
        return address;
      }
    }
  }
  return addressOf(nullptr, symbolName);
}

}  // namespace

void* dlOpen(const char* fileName, std::uint32_t flags) {
  if (fileName == nullptr || *fileName == '\0') {
    return fail("filename is null or empty");
  }
  if ((flags & DL_NOW) == 0 && flags != DL_NOLOAD) {
    return fail("flags must either include DL_NOW or only specify DL_NOLOAD");
  }
  if ((flags & DL_NOLOAD) != 0) {
    return GetModuleHandleA(fileName);
  }

  const std::optional<DWORD> sizeBefore = moduleListSize();
  if (!sizeBefore) {
    return fail("enumerate modules failed before loading module");
  }
  ModuleReference module(LoadLibraryExA(fileName, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module) {
    return fail("load library failed");
  }
  const std::optional<DWORD> sizeAfter = moduleListSize();
  if (!sizeAfter) {
    return fail("enumerate modules failed after loading module");
  }
  if (sizeBefore != sizeAfter && (flags & DL_LOCAL) != 0) {
    localModules.insert(module.get());
  }
  if ((flags & DL_GLOBAL) != 0) {
    localModules.erase(module.get());
  }
  return module.release();
}

void* dlSym(void* handle, const char* symbolName) {
  if (handle == nullptr || symbolName == nullptr) {
    return nullptr;
  }
  const std::optional<DWORD> size = moduleListSize();
  if (!size) {
    return fail("enumerate modules failed before memory allocation");
  }
  // Every lookup lists the modules, also one in a single module. If they cannot be listed, no
  // symbol is found.
  const std::unique_ptr<HMODULE[]> modules(new (std::nothrow) HMODULE[*size / sizeof(HMODULE)]);
  if (!modules) {
    return fail("malloc failed");
  }
  DWORD sizeFilled = 0;
  if (K32EnumProcessModules(GetCurrentProcess(), modules.get(), *size, &sizeFilled) == FALSE) {
    return fail("enumerate modules failed after memory allocation");
  }

  void* const address =
      handle == DL_DEFAULT
          ? findInVisibleModules({modules.get(), std::min(*size, sizeFilled) / sizeof(HMODULE)},
                                 symbolName)
          : addressOf(static_cast<HMODULE>(handle), symbolName);
  return address != nullptr ? address : fail("can't resolve symbol");
}

std::int32_t dlClose(void* handle) {
  if (handle == nullptr) {
    return 0;
  }
  if (FreeLibrary(static_cast<HMODULE>(handle)) == FALSE) {
    fail("free library failed");
    return -1;
  }
  localModules.erase(handle);
  return 0;
}

std::uint32_t dlModulePath(const void* address, std::string& path) {
  path.clear();
  if (address == nullptr) {
    fail("Input address is nullptr");
    return 0;
  }
  HMODULE module = nullptr;
  constexpr DWORD FROM_ADDRESS =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (GetModuleHandleExA(FROM_ADDRESS, static_cast<LPCSTR>(address), &module) == FALSE ||
      module == nullptr) {
    fail("Failed to get module handle");
    return 0;
  }
  char buffer[MAX_PATH] = {};
  SetLastError(ERROR_SUCCESS);  // an older "insufficient buffer" must not be taken for this call's
  const DWORD length = GetModuleFileNameA(module, buffer, MAX_PATH);
  // A cut path may fill the buffer, without a terminator and without an error.
  if (length == 0 || length >= MAX_PATH || GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
    fail("Failed to get module file name");
    return 0;
  }
  path = buffer;
  return 1;
}

const char* dlError() { return dlLastError; }
