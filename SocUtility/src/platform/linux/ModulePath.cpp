#include <limits.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/linux/Modules.h"

namespace {

// Room for a working directory and a relative path, each of which the kernel bounds by PATH_MAX.
using PathBuffer = std::array<char, std::size_t{2} * PATH_MAX>;

/// Writes the absolute path of a module that the caller holds; its length or 0 on failure.
std::size_t absolutePath(link_map* module, PathBuffer& path) {
  if (handleOf(module) == programModule()) {
    return programPath(path.data(), path.size());
  }
  const char* name = module->l_name;
  std::size_t directoryLength = 0;
  if (*name != '/') {
    // The directory was made absolute when the module was loaded, so a later change of the working
    // directory does no harm. The dynamic linker itself has none and must not be asked.
    if (module->l_addr == _r_debug.r_ldbase || dlinfo(module, RTLD_DI_ORIGIN, path.data()) != 0) {
      return 0;
    }
    directoryLength = std::strlen(path.data());
    name = std::strrchr(name, '/');
  }
  const std::size_t nameLength = std::strlen(name);
  if (directoryLength + nameLength >= path.size()) {
    return 0;
  }
  std::memcpy(path.data() + directoryLength, name, nameLength + 1);
  return directoryLength + nameLength;
}

}  // namespace

DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
  if (path == nullptr && size != 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  PathBuffer full;
  const ModuleReference reference = referToModule(module == nullptr ? programModule() : module);
  const std::size_t length = reference ? absolutePath(reference.get(), full) : 0;
  if (length == 0) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return 0;
  }
  if (length < size) {
    std::memcpy(path, full.data(), length + 1);
    return static_cast<DWORD>(length);
  }
  if (size != 0) {
    std::memcpy(path, full.data(), size - 1);
    path[size - 1] = '\0';
  }
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return size;
}
