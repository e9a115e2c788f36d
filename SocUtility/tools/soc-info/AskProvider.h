/// The child's side of `check-provider`: loads a provider library, imports from it for an unknown
/// chip, and unloads it.
#pragma once

#include <string>

/// Writes JSON objects to the parent, one a line. `loadError` says why the library could not be
/// loaded, and is the last line. `asked` is one of `keys` in the document of `check-provider`. All
/// others are merged into that document. `stopped` is written before each step, and holds if the
/// process does not survive it. The steps are "load", "DSP 1" and so on for every key, "unload" and
/// "exit".
/// A step that takes more than `seconds` ends the process.
///
/// `file` is an absolute path, `descriptor` that of the parent's stream. Throws
/// `std::runtime_error` when the parent cannot be written to.
void AskProvider(const std::string& file, double seconds, int descriptor);
