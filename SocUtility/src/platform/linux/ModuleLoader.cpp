#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "platform/linux/Modules.h"

namespace {

/// Why `dlopen` refused a name: there is a file that is no library, or the library or one that it
/// needs was not found.
DWORD loadError(LPCSTR name) {
  if (std::strchr(name, '/') == nullptr) {
    return ERROR_MOD_NOT_FOUND;
  }
  const int file = open(name, O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return ERROR_MOD_NOT_FOUND;
  }
  char magic[SELFMAG] = {};
  const ssize_t count = read(file, magic, SELFMAG);
  close(file);
  const bool isElf = count == SELFMAG && std::memcmp(magic, ELFMAG, SELFMAG) == 0;
  return isElf ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT;
}

/// The module that contains the address, or null. The handle is not yet checked.
HMODULE moduleAt(const void* address) {
  Dl_info info;
  void* module = nullptr;
  return dladdr1(address, &info, &module, RTLD_DL_LINKMAP) == 0
             ? nullptr
             : handleOf(static_cast<link_map*>(module));
}

}  // namespace

HMODULE LoadLibraryExA(LPCSTR name, HANDLE file, DWORD flags) {
  const bool flagsKnown = (flags & ~LOAD_WITH_ALTERED_SEARCH_PATH) == 0;
  if (name == nullptr || *name == '\0' || file != nullptr || !flagsKnown) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  ModuleReference module = referToName(name, RTLD_NOW | RTLD_LOCAL);
  if (!module) {
    SetLastError(loadError(name));
  }
  return handleOf(module.release());
}

BOOL FreeLibrary(HMODULE module) {
  // Checked first, since `dlclose` follows whatever pointer it is given. It fails for a module that
  // only others hold, such as a library that the program is linked with.
  if (!isModule(module) || dlclose(linkMapOf(module)) != 0) {
    SetLastError(module == nullptr ? ERROR_INVALID_HANDLE : ERROR_MOD_NOT_FOUND);
    return FALSE;
  }
  return TRUE;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  const HMODULE asked = module == nullptr ? programModule() : module;
  // The reference is more than a check: the search list that `dlsym` follows exists only for
  // modules that were once opened, not for those that came in as another's dependency.
  const ModuleReference reference = referToModule(asked);
  if (!reference) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
  }
  void* const symbol = name == nullptr ? nullptr : dlsym(reference.get(), name);
  // `dlsym` goes on into the module's dependencies.
  if (symbol == nullptr || moduleAt(symbol) != asked) {
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
  }
  return reinterpret_cast<FARPROC>(symbol);
}

HMODULE GetModuleHandleA(LPCSTR name) {
  HMODULE module = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, name, &module);
  return module;
}

BOOL GetModuleHandleExA(DWORD flags, LPCSTR name, HMODULE* module) {
  constexpr DWORD KNOWN_FLAGS =
      GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
  if (module == nullptr || (flags & ~KNOWN_FLAGS) != 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  ModuleReference reference;
  if (name == nullptr) {
    reference = referToModule(programModule());
  } else if ((flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) != 0) {
    reference = referToModule(moduleAt(name));
  } else if (*name != '\0') {
    reference = referToName(name, RTLD_LAZY | RTLD_NOLOAD);
  }
  *module = handleOf(reference.get());
  if (!reference) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return FALSE;
  }
  if ((flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) == 0) {
    static_cast<void>(reference.release());
  }
  return TRUE;
}
