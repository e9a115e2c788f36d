/// The import: asks a provider its capabilities, key by key, and writes the answers into a record.
/// Runs inside the provider attempt, under its mutex.
#pragma once

#include <cstdint>
#include <span>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

/// How the import of one component went.
enum ImportStatus : std::int32_t {
  MISSING_REQUIRED = -2,  ///< At least one required key was not imported.
  IMPORTED_ALL = 0,
  MISSING_OPTIONAL = 1,  ///< Every required key was imported, at least one optional one was not.
};

/// The keys that a service-utilities provider is asked: the required ones, then the optional ones,
/// each in the given order.
struct ImportKeys {
  std::span<const std::uint8_t> required;
  std::span<const std::uint8_t> optional;
};

/// Without the lists that such a provider has no form for (46, 47, 48), and without 45.
extern const ImportKeys DSP_IMPORT_KEYS;
/// Without 2 and 3, which answer from the fields of 6 and 7.
extern const ImportKeys GPU_IMPORT_KEYS;
/// All optional: the CPU's keys count for no status.
extern const ImportKeys CPU_IMPORT_KEYS;

/// Imports from an accepted provider: over the record's values, or, from a system-info provider, by
/// replacing them. What was imported stays, whatever the result.
///
/// \return Whether the import counts: true, unless the chip is unknown (`socModel` 0) and a
///         required DSP or GPU key was not imported. Throws `std::bad_alloc`.
bool ImportProviderCapabilities(ProviderLoader& provider, SocInfo& record);

/// Imports over the values of one entry; a key that the provider does not answer keeps its value.
ImportStatus ImportDspInPlace(ProviderLoader& provider, DspInfo& entry);
ImportStatus ImportGpuInPlace(ProviderLoader& provider, GpuInfo& entry);

/// Asks one key by the typed call that its field calls for and stores the answer in that field of
/// `entry`: a `DspInfo`, `GpuInfo` or `CpuInfo`. False, with the field as it was, when the provider
/// does not answer it or there is no such call.
template <class Record>
bool TryImportKey(ProviderLoader& provider, std::uint32_t key, Record& entry);

extern template bool TryImportKey(ProviderLoader&, std::uint32_t, DspInfo&);
extern template bool TryImportKey(ProviderLoader&, std::uint32_t, GpuInfo&);
extern template bool TryImportKey(ProviderLoader&, std::uint32_t, CpuInfo&);
