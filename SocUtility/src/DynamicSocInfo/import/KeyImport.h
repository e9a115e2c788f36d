/// The import of one key. Both imports are made of it.
#pragma once

#include <cstdint>
#include <string>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

/// Asks one key with the typed call for its field's type, and stores the answer in that field of
/// `entry`: a `DspInfo`, `GpuInfo` or `CpuInfo`. Returns false, with the field unchanged, when the
/// call fails, when providers cannot answer this type, or when the key is no capability. A failed
/// call copies its message to `failure` unless that is null.
template <class Record>
bool TryImportKey(ProviderLoader& provider, std::uint32_t key, Record& entry,
                  std::string* failure = nullptr);
