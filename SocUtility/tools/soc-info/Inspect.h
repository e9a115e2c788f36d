/// What soc-info does without a command: the chip, where the answers come from, every capability.
#pragma once

#include <iosfwd>

#include "InstalledLibrary.h"
#include "MachineTables.h"
#include "Output.h"

/// Asks the library of this machine every key and returns the document. Reasons come from the core,
/// which makes the library's provider attempt once more. Without a library the tables can be of
/// another machine, and the document is the core's alone.
Json Inspect(const MachineTables& tables, InstalledLibrary* library = nullptr);

/// For people: the chip, the provider, and a table of every capability.
void WriteInspection(std::ostream& out, const Json& document);
