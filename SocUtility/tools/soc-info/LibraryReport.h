/// The installed library, asked through its exports in a child process.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Capabilities.h"
#include "Output.h"

/// What the child answers, and how it ended.
struct LibraryReport {
  Json description = nullptr;  ///< `library` in the field `run` of a document.
  /// Where the library looks for a provider first, with a slash at the end. Empty if it does not
  /// look there: it was not survived, or cannot learn its own path.
  std::string directory;
  /// In the order of `CapabilitiesOf`: objects of `status`, `value` (as in `Capability`, null
  /// unless the query succeeded) and `malformed` (why the answer could not be read, or null). Null
  /// where the process ended before.
  std::vector<Json> answers;
  Json findings = Json::array();
};

/// Asks the library in `file`. If `file` is empty, asks the library beside this program or, except
/// on Windows, in the package's library folder. With `only`, asks this capability alone. Another
/// query always comes before the first capability asked, because the first scalar query of an
/// unknown chip succeeds even if all later ones fail. Throws `InputError` if there is no such
/// library.
LibraryReport ReportOnLibrary(const std::string& file, double seconds,
                              const std::optional<CapabilityId>& only = {});
