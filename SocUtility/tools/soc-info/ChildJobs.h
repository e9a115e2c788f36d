/// What the child does (see `ForeignCode.h`). Each job loads a library, asks it, and unloads it.
#pragma once

#include "ForeignCode.h"

/// Asks the installed library. The job: its `file`, and the capabilities from the number `from` to
/// below `end`, in the order of `CapabilitiesOf`. Reports `description` and `directory` (see
/// `LibraryReport`), for each capability an `answer` with its number `index`, or only `refused`:
/// why `file` is no such library.
void AskLibrary(JobReport& report);

/// Imports from a provider for an unknown chip, as the library does. The job: the `candidates` that
/// are tried, each a `path` and a `name`, and the number `from` of the first key to be asked.
/// Reports each `candidate` (one of `lookedFor` in a document), `library` (the path of the one
/// loaded) and `reason` (why it is rejected, or null), each `key` (one of `keys` in the document of
/// `check-provider`), and at the end whether it `succeeds`.
///
/// With `isCheck` the job also looks for what an import survives by luck (see `ImportFindings.h`).
void WatchImport(JobReport& report);
