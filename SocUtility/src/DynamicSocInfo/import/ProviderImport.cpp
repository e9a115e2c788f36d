#include "DynamicSocInfo/import/ProviderImport.h"

#include <span>

#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/import/KeyImport.h"
#include "DynamicSocInfo/import/SystemInfoImport.h"

namespace {

/// The keys that a service-utilities provider is asked for a record of this type: the required
/// ones, then the optional ones, each in the given order.
template <class Record>
struct ImportKeys;

/// Without the lists that such a provider has no form for (46, 47, 48), and without 45. Providers
/// see this order: 17 comes after 25.
template <>
struct ImportKeys<DspInfo> {
  static constexpr std::uint8_t REQUIRED[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10,
                                              11, 12, 13, 14, 15, 16, 18, 19, 20, 21,
                                              22, 23, 24, 25, 17, 26, 27, 28};
  static constexpr std::uint8_t OPTIONAL[] = {29, 30, 31, 32, 33, 34, 36, 37,
                                              38, 39, 40, 41, 42, 43, 44};
};

/// Without 2 and 3, which answer from the fields of 6 and 7.
template <>
struct ImportKeys<GpuInfo> {
  static constexpr std::uint8_t REQUIRED[] = {1, 4};
  static constexpr std::uint8_t OPTIONAL[] = {5, 6, 7, 8, 9, 10, 11, 12, 13};
};

/// All optional: the CPU's keys count for no status.
template <>
struct ImportKeys<CpuInfo> {
  static constexpr std::span<const std::uint8_t> REQUIRED{};
  static constexpr std::uint8_t OPTIONAL[] = {1, 2};
};

/// Imports one component. Every key is asked, whatever happened to those before it.
template <class Record>
ImportStatus importInPlace(ProviderLoader& provider, Record& entry,
                           const ImportObserver& observer) {
  ImportStatus status = IMPORTED_ALL;
  const auto importKeys = [&](std::span<const std::uint8_t> keys, bool required) {
    for (const std::uint8_t key : keys) {
      AskedKey asked{KeyTable<Record>::COMPONENT, key, required, false, {}};
      asked.answered = TryImportKey(provider, key, entry, observer ? &asked.failure : nullptr);
      if (!asked.answered && status != MISSING_REQUIRED) {
        status = required ? MISSING_REQUIRED : MISSING_OPTIONAL;
      }
      if (observer) {
        observer(asked);
      }
    }
  };
  importKeys(ImportKeys<Record>::REQUIRED, true);
  importKeys(ImportKeys<Record>::OPTIONAL, false);
  return status;
}

}  // namespace

bool ImportProviderCapabilities(ProviderLoader& provider, SocInfo& record,
                                const ImportObserver& observer) {
  if (provider.getCapabilitySerialized != nullptr) {
    return ImportFromSystemInfoProvider(provider, record);
  }
  const ImportStatus dspStatus = ImportDspInPlace(provider, record.dsps.front(), observer);
  importInPlace(provider, record.cpu, observer);
  const ImportStatus gpuStatus = ImportGpuInPlace(provider, record.gpus.front(), observer);
  return record.socModel != 0 || (dspStatus != MISSING_REQUIRED && gpuStatus != MISSING_REQUIRED);
}

ImportStatus ImportDspInPlace(ProviderLoader& provider, DspInfo& entry,
                              const ImportObserver& observer) {
  return importInPlace(provider, entry, observer);
}

ImportStatus ImportGpuInPlace(ProviderLoader& provider, GpuInfo& entry,
                              const ImportObserver& observer) {
  return importInPlace(provider, entry, observer);
}
