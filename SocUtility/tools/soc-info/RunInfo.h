/// Where and when a document was made.
#pragma once

#include <iosfwd>

#include "InstalledLibrary.h"
#include "Output.h"

/// The field `run` of a document. `library` is null where none is asked.
Json RunInfo(const InstalledLibrary* library = nullptr);

/// For people; nothing for a document without the field.
void WriteRunInfo(std::ostream& out, const Json& document);
