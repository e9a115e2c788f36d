#include "DynamicSocInfo/import/SystemInfoImport.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/import/KeyImport.h"
#include "DynamicSocInfo/import/ProviderCalls.h"

namespace {

/// The GPU keys that are asked; 13 is not, so its field keeps the default.
constexpr std::uint8_t GPU_KEYS[] = {1, 4, 5, 6, 7, 8, 9, 10, 11, 12};

/// A DSP entry from the provider's answers to every DSP key, in ascending order.
DspInfo importDsp(ProviderLoader& provider) {
  DspInfo entry;
  std::vector<std::uint8_t> scratch(8);
  for (std::uint32_t key = 1; key < KeyTable<DspInfo>::FIELDS.size(); ++key) {
    VisitField<DspInfo>(
        key,
        [&]<class T>(T DspInfo::*field) {
          if constexpr (IS_LIST<T>) {
            ImportSerializedList(provider, key, entry.*field, scratch);
          } else {
            TryImportKey(provider, key, entry);
          }
        },
        [] {});
  }
  return entry;
}

GpuInfo importGpu(ProviderLoader& provider) {
  GpuInfo entry(0);
  for (const std::uint8_t key : GPU_KEYS) {
    TryImportKey(provider, key, entry);
  }
  return entry;
}

CpuInfo importCpu(ProviderLoader& provider) {
  CpuInfo cpu;
  for (const std::uint32_t key : {1U, 2U}) {
    TryImportKey(provider, key, cpu);
  }
  return cpu;
}

}  // namespace

bool ImportFromSystemInfoProvider(ProviderLoader& provider, SocInfo& record) {
  std::vector<DspInfo> dsps{importDsp(provider)};
  std::vector<GpuInfo> gpus{importGpu(provider)};
  record.cpu = importCpu(provider);
  record.dsps = std::move(dsps);
  record.gpus = std::move(gpus);
  return true;
}

bool TryGetSerializedBytes(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
                           std::vector<std::uint8_t>& buffer) try {
  if (provider.getCapabilitySerialized == nullptr) {
    return false;
  }
  AskGrowing(provider.getCapabilitySerialized, component, key, buffer, WhenGrowing::KEEP);
  return true;
} catch (const std::runtime_error&) {
  return false;
}
