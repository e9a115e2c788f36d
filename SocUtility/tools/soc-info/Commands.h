/// The commands: each makes a JSON document, and prints it for people.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>

#include "MachineTables.h"
#include "Output.h"

/// What is asked, and for how long.
struct ForeignCodeOptions {
  std::string library;  ///< The installed library's file; empty to find it.
  double seconds = 10;  ///< The time limit of each step.
};

/// No command: asks the installed library of this machine every key. An import for reasons is made
/// apart from it, from the provider that the library finds. Throws `InputError` if there is no
/// library.
Json Inspect(const MachineTables& tables, const ForeignCodeOptions& options);
/// The same for another machine's tables, without a library.
Json Inspect(const MachineTables& tables);
/// The chip, the provider, and a table of every capability.
void WriteInspection(std::ostream& out, const Json& document);

/// `identify`: runs the library's identification over the tables. The document depends on the
/// tables alone, except for `run`.
Json Identify(const MachineTables& tables, const Json& run = nullptr);
/// The steps in their order, and how to add a chip that is not known.
void WriteIdentification(std::ostream& out, const Json& document);

/// `check-provider`: a provider's answers, key by key, and what it does wrong. Throws `InputError`
/// when the file is missing or cannot be loaded.
Json CheckProvider(const std::filesystem::path& file, double seconds);
/// A line for each key, and the verdict.
void WriteCheck(std::ostream& out, const Json& check);

/// `get`: one answer of the installed library. Throws `InputError` if there is no such capability
/// or no library.
Json GetCapability(const std::string& component, std::uint32_t key,
                   const ForeignCodeOptions& options);
/// The value alone; nothing without one.
void WriteValue(std::ostream& out, const Json& document);
/// Why there is none.
std::string WhyNoValue(const Json& document);
