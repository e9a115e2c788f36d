/// The import: asks a provider key by key and writes its answers into a record. The provider
/// attempt runs it under its mutex. soc-info runs it to explain the result.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

/// How the import of one component went.
enum ImportStatus : std::int32_t {
  MISSING_REQUIRED = -2,  ///< A required key was not imported.
  IMPORTED_ALL = 0,
  MISSING_OPTIONAL = 1,  ///< An optional key was not imported; the required keys all were.
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

/// Imports from an accepted provider. Answers of a service-utilities provider are written over the
/// record's values, and `observer` is called for each key. Answers of a system-info provider
/// replace all capabilities of the record, and `observer` is not called. Imported values stay in
/// the record, also if the import is incomplete.
///
/// \return Whether the import succeeded. For an unknown chip (`socModel` 0) it succeeds if every
///         required key was answered; for a known chip and for a system-info provider always.
///         Throws `std::bad_alloc`, and what the provider and `observer` throw.
bool ImportProviderCapabilities(ProviderLoader& provider, SocInfo& record,
                                const ImportObserver& observer = {});

/// Imports over the values of one entry. An unanswered key keeps its value.
ImportStatus ImportDspInPlace(ProviderLoader& provider, DspInfo& entry,
                              const ImportObserver& observer = {});
ImportStatus ImportGpuInPlace(ProviderLoader& provider, GpuInfo& entry,
                              const ImportObserver& observer = {});
