#include "Output.h"

#include <iomanip>
#include <ostream>
#include <sstream>

namespace {

constexpr int LABEL_WIDTH = 13;

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
