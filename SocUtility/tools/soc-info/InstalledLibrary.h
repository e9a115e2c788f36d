/// The installed library, asked through its exports.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Capabilities.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "Output.h"

/// What a query returned.
struct LibraryAnswer {
  std::uint32_t status;
  Json value;      ///< As in `Capability`; null unless the query succeeded.
  Json malformed;  ///< Why the answer could not be read, a string; null when it could.
};

class InstalledLibrary {
 public:
  /// Loads `file`. An empty one means the library beside this program or, except on Windows, in the
  /// package's library folder. Throws `InputError`.
  explicit InstalledLibrary(const std::string& file);

  /// `library` in the field `run` of a document.
  Json Description() const;
  /// Where the library looks for a provider first, with a slash at the end. Empty where the library
  /// cannot learn its own path, and so does not look there.
  std::string Directory() const;
  /// Asks for everything, in the order of `CapabilitiesOf`. The first scalar query of an unknown
  /// chip succeeds even if later ones fail, so one query is made before.
  std::vector<LibraryAnswer> AskEveryCapability();

 private:
  std::string path_;        ///< Shown to people.
  std::string ownPath_;     ///< The path that the library finds for itself; empty if too long.
  ProviderLoader library_;  ///< It has the exports of a system-info provider.
};
