/// Where and when a document was made.
#pragma once

#include <iosfwd>

#include "Output.h"

/// The field `run` of a document. `library` describes the library that was asked, if any.
Json RunInfo(const Json& library = nullptr);

/// For people; nothing for a document without the field.
void WriteRunInfo(std::ostream& out, const Json& document);
