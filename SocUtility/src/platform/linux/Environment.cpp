#include <unistd.h>

#include <array>

#include "platform/WindowsApi.h"

namespace {

/// One character as one or two UTF-16 units.
class Units {
 public:
  explicit constexpr Units(char32_t code) {
    if (code < 0x10000) {
      units_[0] = static_cast<WCHAR>(code);
    } else {
      units_[0] = static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
      units_[1] = static_cast<WCHAR>(0xDC00 + (code & 0x3FF));
      count_ = 2;
    }
  }
  constexpr DWORD Count() const { return count_; }
  constexpr const WCHAR* begin() const { return units_.data(); }
  constexpr const WCHAR* end() const { return units_.data() + count_; }

 private:
  std::array<WCHAR, 2> units_{};
  DWORD count_ = 1;
};

/// Takes the next character off zero-terminated UTF-8; bytes that are none give U+FFFD.
Units nextCharacter(const char*& text) {
  constexpr Units REPLACEMENT(0xFFFD);
  const auto lead = static_cast<BYTE>(*text++);
  if (lead < 0x80) {
    return Units(lead);
  }
  if (lead < 0xC2 || lead > 0xF4) {
    return REPLACEMENT;
  }
  const int followers = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  char32_t code = lead & (0x3FU >> followers);
  // After some leads the range is narrower: no overlong forms, no surrogates, nothing past
  // U+10FFFF.
  BYTE first = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  BYTE last = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  for (int i = 0; i < followers; ++i) {
    const auto byte = static_cast<BYTE>(*text);
    if (byte < first || byte > last) {
      return REPLACEMENT;
    }
    code = code << 6 | (byte & 0x3FU);
    ++text;
    first = 0x80;
    last = 0xBF;
  }
  return Units(code);
}

/// The value in a "name=value" entry when the name is the given one, else null.
const char* valueIn(const char* entry, LPCWSTR name) {
  while (*entry != '=' && *entry != '\0') {
    for (const WCHAR unit : nextCharacter(entry)) {
      // The name's terminator ends this too: no unit of an entry's name is 0.
      if (*name++ != unit) {
        return nullptr;
      }
    }
  }
  return *entry == '=' && *name == 0 ? entry + 1 : nullptr;
}

const char* findValue(LPCWSTR name) {
  if (name == nullptr || *name == 0 || environ == nullptr) {
    return nullptr;
  }
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (const char* value = valueIn(*entry, name)) {
      return value;
    }
  }
  return nullptr;
}

}  // namespace

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD size) {
  const char* const value = findValue(name);
  if (value == nullptr) {
    SetLastError(ERROR_ENVVAR_NOT_FOUND);
    return 0;
  }
  DWORD length = 0;
  for (const char* rest = value; *rest != '\0';) {
    length += nextCharacter(rest).Count();
  }
  if (buffer == nullptr || size <= length) {
    return length + 1;
  }
  for (const char* rest = value; *rest != '\0';) {
    for (const WCHAR unit : nextCharacter(rest)) {
      *buffer++ = unit;
    }
  }
  *buffer = 0;
  // An empty value and a missing variable both return 0; the last error tells them apart.
  if (length == 0) {
    SetLastError(ERROR_SUCCESS);
  }
  return length;
}
