/// How soc-info writes: one JSON document for programs, labelled lines for people.
///
/// Both escape strings from tables, providers and the file system. Documents are ASCII. Text for
/// people keeps printable characters as they are; no control character reaches the terminal. Bytes
/// that are not UTF-8 become U+FFFD.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Paths.h"

/// Keeps fields in the order in which they were added, so that documents can be compared by line.
using Json = nlohmann::ordered_json;

/// The version of the documents' schema, docs/soc-info.schema.json.
inline constexpr int SCHEMA_VERSION = 2;

/// Writes an object as one document: a field a line, and a line for each object of an array.
void WriteDocument(std::ostream& out, const Json& object);

/// A value on one line, in ASCII.
std::string Compact(const Json& value);

/// A string as it is, nothing for null, any other value on one line.
std::string Text(const Json& value);

/// Null for an empty text.
Json TextOrNull(std::string_view text);

/// For people: `text` in double quotes, with what cannot be printed escaped as in JSON.
std::string Quoted(std::string_view text);
/// The same without the quotes.
std::string Unquoted(std::string_view text);

/// "0x" and `digits` upper-case hexadecimal digits, more when the number needs more.
std::string Hex(std::uint64_t number, int digits);

/// Writes a label and what it says, texts aligned; a continuation line has an empty label.
void WriteLine(std::ostream& out, std::string_view label, std::string_view text);

/// Writes rows of equally many cells, aligned by column; the second column has numbers. A cell of
/// more than 32 characters pushes aside only the rest of its row.
void WriteTable(std::ostream& out, const std::vector<std::vector<std::string>>& rows);

/// The error for what the user gave: a file, a directory, a machine whose tables cannot be read.
/// Ends the program with exit status 2 and its message on standard error.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;

  /// "`path`: `reason`", the path escaped.
  InputError(const std::filesystem::path& path, const std::string& reason)
      : std::runtime_error(Quoted(PathText(path)) + ": " + reason) {}
};

/// Throws `InputError` unless `path` is a regular file or a link to one.
void RequireRegularFile(const std::filesystem::path& path);
