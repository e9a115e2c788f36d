/// The command `identify`: the steps of a chip's identification.
#pragma once

#include <iosfwd>

#include "MachineTables.h"
#include "Output.h"

/// Runs the library's identification over the tables and returns the document of the command, which
/// depends on the tables alone, except for `run`.
Json Identify(const MachineTables& tables, const Json& run = nullptr);

/// For people: the steps in their order, and how to add a chip that is not known.
void WriteIdentification(std::ostream& out, const Json& document);
