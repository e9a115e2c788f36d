#include "Output.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace {

constexpr int LABEL_WIDTH = 13;
constexpr std::size_t WIDEST_COLUMN = 32;
constexpr std::size_t NUMBERS_COLUMN = 1;

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
    out << separator << Quoted(name) << ": ";
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

std::string Quoted(std::string_view text) { return Compact(Json(text)); }

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
