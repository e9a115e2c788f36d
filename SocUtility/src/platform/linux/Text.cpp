#include <climits>
#include <string_view>

#include "platform/WindowsApi.h"

namespace {

constexpr char32_t REPLACEMENT = 0xFFFD;

constexpr bool isLead(WCHAR unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isTrail(WCHAR unit) { return unit >= 0xDC00 && unit < 0xE000; }

/// Takes the next character off the text, which is not empty.
char32_t nextCharacter(std::u16string_view& text) {
  const WCHAR unit = text.front();
  text.remove_prefix(1);
  if (isLead(unit) && !text.empty() && isTrail(text.front())) {
    const WCHAR trail = text.front();
    text.remove_prefix(1);
    return 0x10000U + (static_cast<char32_t>(unit - 0xD800) << 10) + (trail - 0xDC00U);
  }
  return isLead(unit) || isTrail(unit) ? REPLACEMENT : unit;
}

constexpr std::size_t utf8Size(char32_t code) {
  return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

/// Writes a character and returns the position after it.
char* appendUtf8(char* out, char32_t code) {
  const std::size_t size = utf8Size(code);
  if (size == 1) {
    *out++ = static_cast<char>(code);
    return out;
  }
  // The lead byte counts the bytes in its highest bits; each of the others carries six bits.
  std::size_t shift = 6 * (size - 1);
  *out++ = static_cast<char>((0xF00U >> size & 0xF0U) | code >> shift);
  while (shift > 0) {
    shift -= 6;
    *out++ = static_cast<char>(0x80U | (code >> shift & 0x3FU));
  }
  return out;
}

}  // namespace

// NOLINTBEGIN(readability-non-const-parameter): the signature is the Win32 one
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideLength, LPSTR bytes,
                        int size, LPCSTR defaultChar, LPBOOL usedDefaultChar) {
  // NOLINTEND(readability-non-const-parameter)
  const bool inputValid = wide != nullptr && wideLength != 0 && wideLength >= -1;
  const bool outputValid = size == 0 || (size > 0 && bytes != nullptr);
  if (codePage != CP_UTF8 || flags != 0 || defaultChar != nullptr || usedDefaultChar != nullptr ||
      !inputValid || !outputValid) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const std::size_t length = wideLength == -1 ? std::u16string_view(wide).size() + 1
                                              : static_cast<std::size_t>(wideLength);
  const std::u16string_view text(wide, length);

  std::size_t needed = 0;
  for (std::u16string_view rest = text; !rest.empty();) {
    needed += utf8Size(nextCharacter(rest));
  }
  if (needed > INT_MAX) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  if (size == 0) {
    return static_cast<int>(needed);
  }
  if (needed > static_cast<std::size_t>(size)) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  for (std::u16string_view rest = text; !rest.empty();) {
    bytes = appendUtf8(bytes, nextCharacter(rest));
  }
  return static_cast<int>(needed);
}
