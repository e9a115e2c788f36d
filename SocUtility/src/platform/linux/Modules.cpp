#include "platform/linux/Modules.h"

#include <limits.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

using PathBuffer = std::array<char, PATH_MAX>;

std::string_view fileName(std::string_view path) {
  return path.substr(path.rfind('/') + 1);  // npos + 1 is 0: no directory, the whole path
}

/// Calls `visit` for each module, the program first, until it returns true.
template <class Visit>
void forEachModule(Visit visit) noexcept {
  // The list changes only under the lock that `dl_iterate_phdr` holds while it calls back; the
  // entry it reports is not needed.
  dl_iterate_phdr(
      [](dl_phdr_info*, std::size_t, void* visitor) {
        for (link_map* module = _r_debug.r_map; module != nullptr; module = module->l_next) {
          const bool hasFile =
              module == _r_debug.r_map || std::strchr(module->l_name, '/') != nullptr;
          if (hasFile && (*static_cast<Visit*>(visitor))(module)) {
            break;
          }
        }
        return 1;
      },
      &visit);
}

/// Copies the name under which the first matching module was loaded, because the module may be
/// gone as soon as the lock is. False when none matches.
template <class Matches>
bool copyModuleName(PathBuffer& name, Matches matches) noexcept {
  bool copied = false;
  forEachModule([&](const link_map* module) {
    if (!matches(module)) {
      return false;
    }
    const std::size_t size = std::strlen(module->l_name) + 1;
    if (size <= name.size()) {
      std::memcpy(name.data(), module->l_name, size);
      copied = true;
    }
    return true;
  });
  return copied;
}

ModuleReference open(const char* name, int mode) {
  return ModuleReference(static_cast<link_map*>(dlopen(name, mode)));
}

ModuleReference referToProgram() { return open(nullptr, RTLD_LAZY); }

bool namesProgram(std::string_view name) {
  PathBuffer buffer;
  const std::string_view path(buffer.data(), programPath(buffer.data(), buffer.size()));
  return name == path || name == fileName(path);
}

}  // namespace

bool isModule(HMODULE module) noexcept {
  bool found = false;
  forEachModule([&](link_map* candidate) { return found = handleOf(candidate) == module; });
  return found;
}

ModuleReference referToModule(HMODULE module) noexcept {
  if (module == programModule()) {
    return referToProgram();
  }
  PathBuffer name;
  if (!copyModuleName(name, [&](const link_map* other) { return other == linkMapOf(module); })) {
    return nullptr;
  }
  ModuleReference reference = open(name.data(), RTLD_LAZY | RTLD_NOLOAD);
  // Between the copy and the call another module may have taken the name.
  return reference.get() == linkMapOf(module) ? std::move(reference) : nullptr;
}

ModuleReference referToName(LPCSTR name, int mode) noexcept {
  if (namesProgram(name)) {
    return referToProgram();
  }
  PathBuffer loaded;
  const bool isFileName = std::strchr(name, '/') == nullptr;
  if (isFileName && copyModuleName(loaded, [&](const link_map* module) {
        return fileName(module->l_name) == name;
      })) {
    return open(loaded.data(), mode);
  }
  return open(name, mode);
}

std::size_t programPath(char* path, std::size_t size) noexcept {
  const ssize_t length = readlink("/proc/self/exe", path, size);
  // A link that fills the buffer may have been cut.
  if (length <= 0 || static_cast<std::size_t>(length) >= size) {
    return 0;
  }
  path[length] = '\0';
  return static_cast<std::size_t>(length);
}

HANDLE GetCurrentProcess() {
  // The pseudo-handle's value on Windows.
  return reinterpret_cast<HANDLE>(std::intptr_t{-1});  // NOLINT(performance-no-int-to-ptr)
}

BOOL K32EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, LPDWORD needed) {
  if (process != GetCurrentProcess()) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  if (needed == nullptr || (modules == nullptr && size != 0)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  const std::size_t capacity = size / sizeof(HMODULE);
  std::size_t count = 0;
  forEachModule([&](link_map* module) {
    if (count < capacity) {
      modules[count] = handleOf(module);
    }
    ++count;
    return false;
  });
  *needed = static_cast<DWORD>(count * sizeof(HMODULE));
  return TRUE;
}
