/// The library that the programs of this machine load, asked through its exports.
#pragma once

#include <cstdint>
#include <string>

#include "Capabilities.h"
#include "Output.h"
#include "ZynSystemInfo.h"

/// An answer of one of the two query functions.
struct LibraryAnswer {
  std::uint32_t status;
  Json value;  ///< As in `Capability`; null unless the status is `SUCCESS`.

  bool operator==(const LibraryAnswer&) const = default;
};

/// A library that stays loaded until the process ends.
class InstalledLibrary {
 public:
  /// Loads `file`. An empty one means the library beside this program or, except on Windows, in the
  /// package's library folder. Throws `InputError`.
  explicit InstalledLibrary(std::string file);

  const std::string& Path() const { return path_; }
  /// Where the library looks for a provider first, with a slash at the end.
  std::string Directory() const;
  /// "0.1".
  std::string InterfaceVersion() const;
  LibraryAnswer Ask(const CapabilityKey& id) const;

 private:
  std::string path_;
  Soc_GetAPIVersionFn* getApiVersion_ = nullptr;
  Soc_GetCapabilityFn* getCapability_ = nullptr;
  Soc_GetCapabilitySerializedFn* getCapabilitySerialized_ = nullptr;
};
