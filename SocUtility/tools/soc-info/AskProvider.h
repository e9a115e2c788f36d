/// The child's side of `check-provider`: does to a provider library, step by step, what an import
/// does to it. What the library does to the process is for the parent to notice.
#pragma once

#include <string>

/// Loads the library at the absolute path `file`, asks it, and unloads it. Writes JSON objects to
/// the parent, one a line, each before what it announces or after what it tells:
///
/// - `step`        what is done next: "load", "DSP 1" and so on for every key, "unload", "exit"
/// - `loadError`   why the library could not be loaded; nothing follows
/// - `rejection`   why an import would not ask it; null when it would, and only then keys follow
/// - a key asked, as in the document of `check-provider --json`
/// - `exception`   the text, or null, of what the latest key threw, if that ends an import: any
///                 exception but `std::runtime_error`, which fails the key; no further key follows
///
/// Throws `std::runtime_error` when the parent cannot be written to.
void AskProvider(const std::string& file);
