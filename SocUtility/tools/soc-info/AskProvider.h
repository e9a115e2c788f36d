/// The child's side of `check-provider`: loads a provider library, imports from it for an unknown
/// chip, and unloads it.
#pragma once

#include <chrono>
#include <string>

/// Writes JSON objects to the parent, one a line. Together they have the fields that
/// `CheckProvider` returns, except for these:
///
/// - `step`       the next step: "load", "DSP 1" and so on for every key, "unload", "exit"
/// - `loadError`  why the library could not be loaded; the last line
/// - `hung`       true: the step took longer than `limit`, and the process has ended itself
/// - `asked`      one of `keys`
///
/// `file` is an absolute path. Throws `std::runtime_error` when the parent cannot be written to.
void AskProvider(const std::string& file, std::chrono::nanoseconds limit);
