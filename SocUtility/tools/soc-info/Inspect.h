/// What soc-info does without a command: the chip, where the answers come from, every capability.
#pragma once

#include <iosfwd>

#include "InstalledLibrary.h"
#include "MachineTables.h"
#include "Output.h"

/// Asks the library every key and returns the document. Reasons come from the core, which
/// identifies this machine and makes the library's provider attempt once more.
Json InspectThisMachine(const InstalledLibrary& library);

/// The document of the machine that the tables came from, from the core, without a library.
Json InspectTables(const MachineTables& tables);

/// For people: the chip, the provider, and a table of every capability.
void WriteInspection(std::ostream& out, const Json& document);
