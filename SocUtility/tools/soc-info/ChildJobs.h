/// What the child does (see `ForeignCode.h`). Each job loads a library, asks it, and unloads it.
#pragma once

#include "ForeignCode.h"

/// Asks the installed library. The job has the library's `file` and two numbers: the capabilities
/// `from` to `end - 1` are asked, counted in the order of `CapabilitiesOf`. Reports `description`
/// and `directory` (see `LibraryReport`), and an `answer` with its `index` for each capability. If
/// `file` is no such library, reports only `refused`, the reason.
void AskLibrary(JobReport& report);

/// Imports from a provider for an unknown chip, as the library does. The job: the `candidates` that
/// are tried, each a `path` and a `name`, and the number `from` of the first key to be asked.
/// Reports each `candidate` (one of `lookedFor` in a document), `library` (the path of the one
/// loaded) and `reason` (why it is rejected, or null), each `key` (one of `keys` in the document of
/// `check-provider`), and at the end whether it `succeeds`.
///
/// With `isCheck` the job also looks for faults that need not break an import: writes outside the
/// buffer, answers that differ in a second import, and what the provider leaves changed after
/// unloading (see `ProcessState.h`).
void WatchImport(JobReport& report);
