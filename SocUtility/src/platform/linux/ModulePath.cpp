#include <limits.h>
#include <link.h>
#include <stdio.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <string_view>
#include <system_error>

#include "platform/WindowsApi.h"

namespace {

struct CloseFile {
  void operator()(FILE* file) const { (void)fclose(file); }
};

/// A line of the kernel's list of mappings: some fields and a path of up to `PATH_MAX` bytes.
using MappingLine = std::array<char, std::size_t{2} * PATH_MAX>;

/// Whether a line ("FIRST-END ...", hexadecimal) has the address.
bool isMapping(std::string_view line, std::uintptr_t address) {
  std::uintptr_t first = 0;
  std::uintptr_t end = 0;
  const char* const last = line.data() + line.size();
  const char* const hyphen = std::from_chars(line.data(), last, first, 16).ptr;
  return hyphen != last && std::from_chars(hyphen + 1, last, end, 16).ec == std::errc{} &&
         first <= address && address < end;
}

/// The path of the file that is mapped at `address`, in `line`; empty when it cannot be found.
std::string_view mappedPath(const void* address, MappingLine& line) {
  const std::unique_ptr<FILE, CloseFile> mappings(fopen("/proc/self/maps", "re"));
  while (mappings && fgets(line.data(), sizeof line, mappings.get()) != nullptr) {
    std::string_view text(line.data());
    if (!text.ends_with('\n')) {
      break;  // a path that is too long: its rest could look like a line
    }
    if (isMapping(text, reinterpret_cast<std::uintptr_t>(address))) {
      text.remove_suffix(1);
      return text.substr(std::min(text.find('/'), text.size()));
    }
  }
  return {};
}

}  // namespace

DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
  const auto* const map = reinterpret_cast<const link_map*>(module);
  MappingLine line;
  // The program has no name, and a relative name does not tell in which directory it was opened.
  const std::string_view full = *map->l_name == '/' ? map->l_name : mappedPath(map->l_ld, line);
  const std::size_t length = full.copy(path, size - 1);
  path[length] = '\0';
  if (length < full.size()) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
  }
  return static_cast<DWORD>(length);
}
