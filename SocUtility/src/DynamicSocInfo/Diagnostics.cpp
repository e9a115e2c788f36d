#include "DynamicSocInfo/Diagnostics.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>

#include "ZynSystemInfo.h"

namespace {

/// `text` and `ending` together have at most 100 bytes.
void writeLine(std::string_view text, std::uint64_t number, std::string_view ending = {}) {
  std::array<char, 128> line;
  char* end = std::copy(text.begin(), text.end(), line.data());
  end = std::to_chars(end, line.data() + line.size(), static_cast<std::int32_t>(number)).ptr;
  end = std::copy(ending.begin(), ending.end(), end);
  *end++ = '\n';
  (void)std::fwrite(line.data(), 1, static_cast<std::size_t>(end - line.data()), stderr);
  (void)std::fflush(stderr);
}

std::string_view select(std::uint64_t component, std::string_view dsp, std::string_view gpu,
                        std::string_view cpu) {
  return component == DSP ? dsp : component == GPU ? gpu : cpu;
}

}  // namespace

std::uint32_t RefuseComponent(std::uint64_t component) noexcept {
  writeLine("UNSUPPORTED_COMPONENT: ", component);
  return UNSUPPORTED_COMPONENT;
}

std::uint32_t RefuseUnknownKey(std::uint64_t component, std::uint64_t key) noexcept {
  writeLine(select(component, "DSP_INFO UNSUPPORTED_KEY: ", "GPU_INFO UNSUPPORTED_KEY: ",
                   "CPU_INFO UNSUPPORTED_KEY: "),
            key);
  return UNSUPPORTED_KEY;
}

std::uint32_t RefuseListKey(std::uint64_t key) noexcept {
  writeLine("COMPLEX CAPABILITY: [", key, "] PLEASE USE SERIALIZED API!");
  return UNSUPPORTED_KEY;
}

std::uint32_t RefuseScalarKey(std::uint64_t component, std::uint64_t key) noexcept {
  writeLine(select(component, "NOT A SERIALIZED DSP CAPABILITY: ",
                   "NOT A SERIALIZED GPU CAPABILITY: ", "NOT A SERIALIZED CPU CAPABILITY: "),
            key);
  return UNSUPPORTED_KEY;
}

std::uint32_t RefuseUnwritableList(std::uint64_t key, std::uint32_t status) noexcept {
  writeLine("INSUFFICIENT_SIZE FOR KEY: ", key);
  return status;
}
