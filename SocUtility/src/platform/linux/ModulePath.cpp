#include <limits.h>
#include <stdio.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <memory>
#include <string_view>
#include <system_error>

#include "platform/linux/Modules.h"

namespace {

// Paths of up to PATH_MAX are found, and a mapping's line has some more before the path.
using PathBuffer = std::array<char, std::size_t{2} * PATH_MAX>;

struct CloseFile {
  void operator()(FILE* file) const { (void)fclose(file); }
};

/// Stores a path and a NUL; its length or 0 on failure.
std::size_t store(std::string_view from, PathBuffer& path) {
  if (from.size() >= path.size()) {
    return 0;
  }
  path[from.copy(path.data(), from.size())] = '\0';
  return from.size();
}

/// Whether a line of the kernel's list of mappings ("FIRST-END ...", hexadecimal) has the address.
bool isMapping(std::string_view line, std::uintptr_t address) {
  std::uintptr_t first = 0;
  std::uintptr_t end = 0;
  const char* const last = line.data() + line.size();
  const char* const hyphen = std::from_chars(line.data(), last, first, 16).ptr;
  return hyphen != last && std::from_chars(hyphen + 1, last, end, 16).ec == std::errc{} &&
         first <= address && address < end;
}

/// Stores the path of the file that is mapped at `address`; its length or 0 on failure.
std::size_t mappedPath(const void* address, PathBuffer& path) {
  const std::unique_ptr<FILE, CloseFile> mappings(fopen("/proc/self/maps", "re"));
  PathBuffer line;
  while (mappings && fgets(line.data(), line.size(), mappings.get()) != nullptr) {
    const std::string_view text(line.data());
    if (!text.ends_with('\n')) {
      return 0;  // a path too long for the buffer: what follows could be anything
    }
    if (isMapping(text, reinterpret_cast<std::uintptr_t>(address))) {
      const std::size_t start = std::min(text.find('/'), text.size() - 1);
      return store(text.substr(start, text.size() - start - 1), path);
    }
  }
  return 0;
}

/// Stores the absolute path of a module that the caller holds; its length or 0 on failure.
std::size_t absolutePath(link_map* module, PathBuffer& path) {
  if (handleOf(module) == programModule()) {
    return programPath(path.data(), path.size());
  }
  // What became of a relative name's directory only the kernel knows for sure: the dynamic linker
  // asked for its path, which can fail, and hands it out without a bound.
  return *module->l_name == '/' ? store(module->l_name, path) : mappedPath(module->l_ld, path);
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
