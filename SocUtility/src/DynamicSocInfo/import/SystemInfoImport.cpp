#include "DynamicSocInfo/import/SystemInfoImport.h"

#include <cstddef>
#include <new>
#include <utility>

#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/capabilities/SerializedCapability.h"
#include "DynamicSocInfo/import/ProviderCalls.h"
#include "DynamicSocInfo/import/ProviderImport.h"

namespace {

/// The GPU keys that are asked; 13 is not, so its field keeps the default.
constexpr std::uint8_t GPU_KEYS[] = {1, 4, 5, 6, 7, 8, 9, 10, 11, 12};

/// A DSP entry from the provider's answers to every DSP key, in ascending order.
DspInfo importDsp(ProviderLoader& provider) {
  DspInfo entry;
  std::vector<std::uint8_t> scratch(8);
  for (std::uint32_t key = 1; key < KeyTable<DspInfo>::FIELDS.size(); ++key) {
    visitField<DspInfo>(
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
  for (const std::uint8_t key : CPU_IMPORT_KEYS.optional) {
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
                           std::vector<std::uint8_t>& buffer) {
  if (provider.getCapabilitySerialized == nullptr) {
    return false;
  }
  while (true) {
    std::uint64_t size = buffer.size();
    const std::uint32_t status =
        provider.getCapabilitySerialized(component, key, buffer.data(), &size);
    if (status == SUCCESS) {
      return ResizeToReported(buffer, size);
    }
    if (status != INSUFFICIENT_SIZE || size <= buffer.size() || !ResizeToReported(buffer, size)) {
      return false;
    }
  }
}

template <class List>
void ImportSerializedList(ProviderLoader& provider, std::uint32_t key, List& field,
                          std::vector<std::uint8_t>& buffer) {
  List* const target = &field;
  bool imported = false;
  try {
    imported = TryGetSerializedBytes(provider, DSP, key, buffer) &&
               deserialize<List>(buffer.data(), buffer.size(), {&target, 1});
  } catch (const std::bad_alloc&) {
    // The list is as long as the provider chose to make it: too long for memory is malformed.
  }
  if (!imported) {
    field.clear();
  }
}

template void ImportSerializedList(ProviderLoader&, std::uint32_t, U32List&,
                                   std::vector<std::uint8_t>&);
template void ImportSerializedList(ProviderLoader&, std::uint32_t, U32Positions&,
                                   std::vector<std::uint8_t>&);
template void ImportSerializedList(ProviderLoader&, std::uint32_t, NameList&,
                                   std::vector<std::uint8_t>&);
template void ImportSerializedList(ProviderLoader&, std::uint32_t, NamedValues&,
                                   std::vector<std::uint8_t>&);
