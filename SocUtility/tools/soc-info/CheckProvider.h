/// What a provider library answers, key by key, and what an import would make of it.
///
/// The library is loaded and asked in a child process (see `AskProvider.h`), so that one that
/// crashes or hangs is reported with the key that did it.
#pragma once

#include <filesystem>
#include <iosfwd>

#include "Output.h"

/// Checks a library and returns the document of `check-provider --json`. `seconds` is the time that
/// each step may take. Throws `InputError` when the file is missing or cannot be loaded.
Json CheckProvider(const std::filesystem::path& file, double seconds);

/// For people: a line for each key, and the verdict.
void WriteCheck(std::ostream& out, const Json& check);
