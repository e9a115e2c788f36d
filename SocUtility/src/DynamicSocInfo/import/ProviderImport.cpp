#include "DynamicSocInfo/import/ProviderImport.h"

#include <string>
#include <vector>

#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/import/ProviderCalls.h"
#include "DynamicSocInfo/import/SystemInfoImport.h"

namespace {

// Providers see the order: 17 has always been asked after the numbers that it belongs to.
constexpr std::uint8_t DSP_REQUIRED[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14,
                                         15, 16, 18, 19, 20, 21, 22, 23, 24, 25, 17, 26, 27, 28};
constexpr std::uint8_t DSP_OPTIONAL[] = {29, 30, 31, 32, 33, 34, 36, 37,
                                         38, 39, 40, 41, 42, 43, 44};
constexpr std::uint8_t GPU_REQUIRED[] = {1, 4};
constexpr std::uint8_t GPU_OPTIONAL[] = {5, 6, 7, 8, 9, 10, 11, 12, 13};
constexpr std::uint8_t CPU_OPTIONAL[] = {1, 2};

/// What `TryImportKey` needs to ask one key.
struct Question {
  ProviderLoader& provider;
  std::uint32_t component;
  std::uint32_t key;
};

// The typed call of each field type.
bool tryGet(const Question& ask, std::uint64_t& out) {
  return TryGetU64(ask.provider, ask.component, ask.key, out);
}
bool tryGet(const Question& ask, std::uint32_t& out) {
  return TryGetU32(ask.provider, ask.component, ask.key, out);
}
bool tryGet(const Question& ask, std::int32_t& out) {
  std::uint32_t bits = 0;
  if (!tryGet(ask, bits)) {
    return false;
  }
  out = static_cast<std::int32_t>(bits);
  return true;
}
bool tryGet(const Question& ask, std::uint8_t& out) {
  return TryGetU8(ask.provider, ask.component, ask.key, out);
}
bool tryGet(const Question& ask, bool& out) {
  return TryGetBool(ask.provider, ask.component, ask.key, out);
}
bool tryGet(const Question& ask, float& out) {
  return TryGetFloat(ask.provider, ask.component, ask.key, out);
}
bool tryGet(const Question& ask, std::string& out) {
  return TryGetString(ask.provider, ask.component, ask.key, out);
}
bool tryGet(const Question& ask, std::vector<std::uint32_t>& out) {
  return TryGetU32List(ask.provider, ask.component, ask.key, out);
}

/// Imports one component. Every key is asked, whatever happened to those before it.
template <class Record>
ImportStatus importInPlace(ProviderLoader& provider, const ImportKeys& keys, Record& entry) {
  ImportStatus status = IMPORTED_ALL;
  const auto importKeys = [&](std::span<const std::uint8_t> group, ImportStatus statusIfMissing) {
    for (const std::uint8_t key : group) {
      if (!TryImportKey(provider, key, entry) && status != MISSING_REQUIRED) {
        status = statusIfMissing;
      }
    }
  };
  importKeys(keys.required, MISSING_REQUIRED);
  importKeys(keys.optional, MISSING_OPTIONAL);
  return status;
}

}  // namespace

constinit const ImportKeys DSP_IMPORT_KEYS = {DSP_REQUIRED, DSP_OPTIONAL};
constinit const ImportKeys GPU_IMPORT_KEYS = {GPU_REQUIRED, GPU_OPTIONAL};
constinit const ImportKeys CPU_IMPORT_KEYS = {{}, CPU_OPTIONAL};

bool ImportProviderCapabilities(ProviderLoader& provider, SocInfo& record) {
  if (provider.getCapabilitySerialized != nullptr) {
    return ImportFromSystemInfoProvider(provider, record);
  }
  const ImportStatus dspStatus = ImportDspInPlace(provider, record.dsps.front());
  importInPlace(provider, CPU_IMPORT_KEYS, record.cpu);
  const ImportStatus gpuStatus = ImportGpuInPlace(provider, record.gpus.front());
  return record.socModel != 0 || (dspStatus != MISSING_REQUIRED && gpuStatus != MISSING_REQUIRED);
}

ImportStatus ImportDspInPlace(ProviderLoader& provider, DspInfo& entry) {
  return importInPlace(provider, DSP_IMPORT_KEYS, entry);
}

ImportStatus ImportGpuInPlace(ProviderLoader& provider, GpuInfo& entry) {
  return importInPlace(provider, GPU_IMPORT_KEYS, entry);
}

template <class Record>
bool TryImportKey(ProviderLoader& provider, std::uint32_t key, Record& entry) {
  const Question ask{provider, KeyTable<Record>::COMPONENT, key};
  return visitField<Record>(
      key,
      [&]<class T>(T Record::*field) {
        if constexpr (requires(T & out) { tryGet(ask, out); }) {
          return tryGet(ask, entry.*field);
        } else {
          return false;
        }
      },
      [] { return false; });
}

template bool TryImportKey(ProviderLoader&, std::uint32_t, DspInfo&);
template bool TryImportKey(ProviderLoader&, std::uint32_t, GpuInfo&);
template bool TryImportKey(ProviderLoader&, std::uint32_t, CpuInfo&);
