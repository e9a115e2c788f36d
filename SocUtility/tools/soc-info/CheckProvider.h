/// The command `check-provider`: a provider library's answers, key by key, and whether an import
/// would count.
///
/// A child process loads and asks the library (see `AskProvider.h`). If the library crashes or
/// hangs, the report names the key.
#pragma once

#include <filesystem>
#include <iosfwd>

#include "Output.h"

/// Checks a library and returns the document of `check-provider --json`. `seconds` is the time that
/// each step may take. Throws `InputError` when the file is missing or cannot be loaded.
Json CheckProvider(const std::filesystem::path& file, double seconds);

/// For people: a line for each key, and the verdict.
void WriteCheck(std::ostream& out, const Json& check);
