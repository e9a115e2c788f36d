#include "Output.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace {

constexpr int LABEL_WIDTH = 13;
constexpr std::size_t WIDEST_COLUMN = 32;
constexpr std::size_t NUMBERS_COLUMN = 1;

/// The bytes of a character of UTF-8, by the first one.
std::size_t sizeOfCharacter(char first) {
  const auto byte = static_cast<unsigned char>(first);
  return byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

/// Not the controls from U+007F to U+009F, marks without a width or for the writing direction
/// (U+200B to U+200F, U+2028 to U+202F, U+2060 to U+206F), U+FEFF and U+FFFD. JSON has escaped the
/// lower controls.
bool isPrintable(std::string_view character) {
  const auto isFrom = [&](std::string_view first, std::string_view last) {
    return character.size() == first.size() && first <= character && character <= last;
  };
  return character != "\x7F" && !isFrom("\xC2\x80", "\xC2\x9F") &&
         !isFrom("\xE2\x80\x8B", "\xE2\x80\x8F") && !isFrom("\xE2\x80\xA8", "\xE2\x80\xAF") &&
         !isFrom("\xE2\x81\xA0", "\xE2\x81\xAF") && character != "\xEF\xBB\xBF" &&
         character != "\xEF\xBF\xBD";
}

/// A character as an escape of JSON, which leaves only U+007F as it is.
std::string escaped(const std::string& character) {
  const std::string quoted = Compact(character);
  return character == "\x7F" ? "\\u007f" : quoted.substr(1, quoted.size() - 2);
}

void writeLineByElement(std::ostream& out, const Json& array) {
  const char* separator = "[\n    ";
  for (const Json& element : array) {
    out << separator << Compact(element);
    separator = ",\n    ";
  }
  out << "\n  ]";
}

}  // namespace

void WriteDocument(std::ostream& out, const Json& object) {
  const char* separator = "{\n  ";
  for (const auto& [name, value] : object.items()) {
    out << separator << Compact(name) << ": ";
    if (value.is_array() && !value.empty() && value.front().is_object()) {
      writeLineByElement(out, value);
    } else {
      out << Compact(value);
    }
    separator = ",\n  ";
  }
  out << "\n}\n";
}

std::string Compact(const Json& value) {
  constexpr bool ONLY_ASCII = true;
  return value.dump(-1, ' ', ONLY_ASCII, Json::error_handler_t::replace);
}

std::string Text(const Json& value) {
  if (value.is_null()) {
    return {};
  }
  return value.is_string() ? value.get<std::string>() : Compact(value);
}

Json TextOrNull(std::string_view text) { return text.empty() ? Json(nullptr) : Json(text); }

std::string Quoted(std::string_view text) {
  constexpr bool ONLY_ASCII = false;
  const std::string json = Json(text).dump(-1, ' ', ONLY_ASCII, Json::error_handler_t::replace);
  std::string quoted;
  for (std::size_t i = 0; i < json.size();) {
    const std::string character = json.substr(i, sizeOfCharacter(json[i]));
    quoted += isPrintable(character) ? character : escaped(character);
    i += character.size();
  }
  return quoted;
}

std::string Unquoted(std::string_view text) {
  const std::string quoted = Quoted(text);
  return quoted.substr(1, quoted.size() - 2);
}

std::string Hex(std::uint64_t number, int digits) {
  std::ostringstream text;
  text << "0x" << std::hex << std::uppercase << std::setfill('0') << std::setw(digits) << number;
  return text.str();
}

void WriteLine(std::ostream& out, std::string_view label, std::string_view text) {
  out << std::left << std::setw(LABEL_WIDTH) << label << text << '\n';
}

void WriteTable(std::ostream& out, const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const std::vector<std::string>& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], std::min(row[column].size(), WIDEST_COLUMN));
    }
  }
  for (const std::vector<std::string>& row : rows) {
    for (std::size_t column = 0; column + 1 < row.size(); ++column) {
      out << (column == NUMBERS_COLUMN ? std::right : std::left)
          << std::setw(static_cast<int>(widths[column])) << row[column] << "  ";
    }
    out << row.back() << '\n';
  }
}

void RequireRegularFile(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) {
    throw InputError(path, error ? error.message() : "not a regular file");
  }
}
