#include <link.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

#include "platform/WindowsApi.h"

namespace {

/// Whether a line of `Mappings` is of the mapping that contains the address.
bool contains(std::string_view line, std::uintptr_t address) {
  std::uintptr_t first = 0;
  std::uintptr_t end = 0;
  const char* const last = line.data() + line.size();
  const char* const hyphen = std::from_chars(line.data(), last, first, 16).ptr;
  return hyphen != last && std::from_chars(hyphen + 1, last, end, 16).ec == std::errc{} &&
         first <= address && address < end;
}

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

  /// The path of the file that is mapped at `address`, valid until the next call; empty when it
  /// cannot be found.
  std::string_view PathAt(const void* address) {
    while (file_ != nullptr && getline(&line_, &capacity_, file_) > 0) {
      const std::string_view line(line_);
      if (contains(line, reinterpret_cast<std::uintptr_t>(address)) && line.ends_with('\n')) {
        const std::size_t path = std::min(line.find('/'), line.size() - 1);
        return line.substr(path, line.size() - 1 - path);
      }
    }
    return {};
  }

 private:
  FILE* file_ = fopen("/proc/self/maps", "re");
  char* line_ = nullptr;
  std::size_t capacity_ = 0;
};

DWORD copyPath(std::string_view full, LPSTR path, DWORD size) {
  const std::size_t length = full.copy(path, size - 1);
  path[length] = '\0';
  if (length < full.size()) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
  }
  return static_cast<DWORD>(length);
}

}  // namespace

DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
  const auto* const map = reinterpret_cast<const link_map*>(module);
  if (*map->l_name == '/') {
    return copyPath(map->l_name, path, size);
  }
  // The program has no name, and a relative name does not tell in which directory it was opened.
  return copyPath(Mappings().PathAt(map->l_ld), path, size);
}
