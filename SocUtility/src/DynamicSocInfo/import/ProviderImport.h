/// The import: asks a provider its capabilities, key by key, and writes the answers into a record.
/// The provider attempt runs it under its mutex; soc-info runs it to explain what it makes of a
/// provider.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

/// How the import of one component went.
enum ImportStatus : std::int32_t {
  MISSING_REQUIRED = -2,  ///< At least one required key was not imported.
  IMPORTED_ALL = 0,
  MISSING_OPTIONAL = 1,  ///< Every required key was imported, at least one optional one was not.
};

/// One key that was asked, and the outcome.
struct AskedKey {
  std::uint32_t component;
  std::uint32_t key;
  bool required;
  bool answered;
  std::string failure;  ///< The failed call's message; empty when the key was answered.
};

/// Called after each key of an import; may be empty. What it throws ends the import.
using ImportObserver = std::function<void(const AskedKey&)>;

/// Imports from an accepted provider: over the record's values, or, from a system-info provider, by
/// replacing them. What was imported stays, whatever the result. `observer` follows an import over
/// the record's values; the other one it does not see.
///
/// \return Whether the import counts: true, unless the chip is unknown (`socModel` 0) and a
///         required DSP or GPU key was not imported. Throws `std::bad_alloc`.
bool ImportProviderCapabilities(ProviderLoader& provider, SocInfo& record,
                                const ImportObserver& observer = {});

/// Imports over the values of one entry; a key that the provider does not answer keeps its value.
ImportStatus ImportDspInPlace(ProviderLoader& provider, DspInfo& entry,
                              const ImportObserver& observer = {});
ImportStatus ImportGpuInPlace(ProviderLoader& provider, GpuInfo& entry,
                              const ImportObserver& observer = {});
