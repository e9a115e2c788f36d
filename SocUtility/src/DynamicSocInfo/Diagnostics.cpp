#include "DynamicSocInfo/Diagnostics.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

void WriteDiagnostic(std::string_view text, std::uint64_t number,
                     std::string_view ending) noexcept {
  std::array<char, 128> line;
  char* end = std::copy(text.begin(), text.end(), line.data());
  end = std::to_chars(end, line.data() + line.size(), static_cast<std::int32_t>(number)).ptr;
  end = std::copy(ending.begin(), ending.end(), end);
  *end++ = '\n';
  (void)std::fwrite(line.data(), 1, static_cast<std::size_t>(end - line.data()), stderr);
  (void)std::fflush(stderr);
}
