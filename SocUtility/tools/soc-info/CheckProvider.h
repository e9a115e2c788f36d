/// What a provider library answers, key by key, and what an import would make of it.
///
/// The library is loaded and asked in a child process (see `AskProvider.h`), so that one that
/// crashes or hangs is reported with the key that did it.
#pragma once

#include <chrono>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "Output.h"

/// What the child process told, and how it ended.
struct ProviderCheck {
  std::string file;            ///< Absolute path.
  bool nameLookedFor = false;  ///< Whether the library looks for a file of this name.
  std::string rejection;       ///< Why an import would not ask the library; empty when it would.
  std::vector<Json> keys;      ///< The keys asked, in order, as in the document.
  std::string lastStep;        ///< "load", "DSP 1" and so on, "unload", "exit".
  std::string exceptionAt;     ///< The key whose exception ended the import; empty when none did.
  Json exceptionText;          ///< That exception's; null when it has none.
  std::string crash;           ///< How the process ended in the last step; empty when as it should.
  bool hung = false;           ///< The last step was given up.
};

/// Checks a library. `limit` is the time that each step may take.
/// Throws `InputError` when the file is missing or cannot be loaded.
ProviderCheck CheckProvider(const std::filesystem::path& file, std::chrono::milliseconds limit);

/// Whether the library did all that an import asks of it, for a chip that the catalogue does not
/// know, and let itself be unloaded.
bool ImportCounts(const ProviderCheck& check);

/// For people: a line for each key, and the verdict.
void WriteText(std::ostream& out, const ProviderCheck& check);

/// The document of `check-provider --json`. Fields, in schema version 1:
///
/// - `schemaVersion`  1
/// - `file`           absolute path; `nameLookedFor`: whether the library looks for such a name
/// - `accepted`       whether an import asks the library; null when loading was not survived
/// - `reason`         why not, or null
/// - `stopped`        null, or `at`: the step that was not survived ("load", "DSP 17", "unload",
///                    "exit"), `how`: "crash" or "hang", `detail`: text or null
/// - `exception`      null, or `at`: the key out of which came an exception that fails the import,
///                    and `text`: its text or null. Both queries then answer `FAILURE` (25), and
///                    each call makes the attempt anew
/// - `statuses`       of `DSP` and `GPU`: 0 every key answered, 1 optional ones missing,
///                    -2 required ones missing; null when not all were asked
/// - `importCounts`   whether the import would count for an unknown chip; the exit status tells too
/// - `keys`           in the order asked: `component`, `key`, `required`, `type`, `answered`,
///                    `value` as imported (null without one, or when no finite number), `message`
///                    of the failure or null, `calls` made for the key, and of the last of them
///                    `status`, `offered` (the buffer's bytes) and `reported` (`*size` afterwards);
///                    after a `std::runtime_error`, which fails the key alone, `status` is null
Json ToJson(const ProviderCheck& check);
