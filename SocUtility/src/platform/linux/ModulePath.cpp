#include <link.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/WindowsApi.h"

namespace {

/// The kernel's list of this process's mappings, line by line: "FIRST-END ... PATH", with
/// hexadecimal addresses.
class Mappings {
 public:
  Mappings() = default;
  ~Mappings() {
    free(line_);
    if (file_ != nullptr) {
      (void)fclose(file_);
    }
  }
  Mappings(const Mappings&) = delete;
  Mappings& operator=(const Mappings&) = delete;

  /// The next line without its end; empty after the last one.
  std::string_view NextLine() {
    const ssize_t length = file_ == nullptr ? 0 : getline(&line_, &capacity_, file_);
    return length > 0 ? std::string_view(line_, static_cast<std::size_t>(length) - 1)
                      : std::string_view();
  }

 private:
  FILE* file_ = fopen("/proc/self/maps", "re");
  char* line_ = nullptr;
  std::size_t capacity_ = 0;
};

/// Whether a line's mapping contains the address.
bool contains(std::string_view line, std::uintptr_t address) {
  std::uintptr_t first = 0;
  std::uintptr_t end = 0;
  const char* const last = line.data() + line.size();
  const char* const hyphen = std::from_chars(line.data(), last, first, 16).ptr;
  return hyphen != last && std::from_chars(hyphen + 1, last, end, 16).ec == std::errc{} &&
         first <= address && address < end;
}

/// The path of the file that is mapped at `address`; empty when it cannot be found.
std::string mappedPath(const void* address) {
  Mappings mappings;
  for (std::string_view line = mappings.NextLine(); !line.empty(); line = mappings.NextLine()) {
    if (contains(line, reinterpret_cast<std::uintptr_t>(address))) {
      return std::string(line.substr(std::min(line.find('/'), line.size())));
    }
  }
  return {};
}

}  // namespace

DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
  const auto* const map = reinterpret_cast<const link_map*>(module);
  // The program has no name, and a relative name does not tell in which directory it was opened.
  const std::string full = *map->l_name == '/' ? map->l_name : mappedPath(map->l_ld);
  const std::size_t length = full.copy(path, size - 1);
  path[length] = '\0';
  if (length < full.size()) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
  }
  return static_cast<DWORD>(length);
}
