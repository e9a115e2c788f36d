/// The installed library, asked through its exports.
#pragma once

#include <string>

#include "Capabilities.h"
#include "Output.h"
#include "ZynSystemInfo.h"

/// A library that stays loaded until the process ends.
class InstalledLibrary {
 public:
  /// Loads `file`. An empty one means the library beside this program or, except on Windows, in the
  /// package's library folder. Throws `InputError`.
  explicit InstalledLibrary(const std::string& file);

  const std::string& Path() const { return path_; }
  /// Where the library looks for a provider first, with a slash at the end. Empty where the library
  /// cannot learn its own path, and so does not look there.
  std::string Directory() const;
  /// "0.1".
  std::string InterfaceVersion() const;
  /// The query's `status`, and the `value` as in `Capability`: null unless the status is 0.
  Json Ask(const CapabilityKey& id) const;

 private:
  std::string path_;     ///< Shown to people.
  std::string ownPath_;  ///< As the library learns it; empty where it is too long for it.
  Soc_GetAPIVersionFn* getApiVersion_ = nullptr;
  Soc_GetCapabilityFn* getCapability_ = nullptr;
  Soc_GetCapabilitySerializedFn* getCapabilitySerialized_ = nullptr;
};
