/// Where and when a document was made.
#pragma once

#include <iosfwd>
#include <string>

#include "Output.h"

/// The field `run` of a document. `library` describes the library that was asked, if any.
Json RunInfo(const Json& library = nullptr);

/// For people; nothing for a document without the field.
void WriteRunInfo(std::ostream& out, const Json& document);

/// The path of the module that contains `address`, with forward slashes; empty when unknown.
std::string ModulePath(const void* address);
