/// The import of one key, of which both imports consist.
#pragma once

#include <cstdint>
#include <string>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

/// Asks one key by the typed call that its field calls for and stores the answer in that field of
/// `entry`: a `DspInfo`, `GpuInfo` or `CpuInfo`. False, with the field as it was, when the call
/// fails or there is none; a failed call leaves its message in `failure` unless that is null.
template <class Record>
bool TryImportKey(ProviderLoader& provider, std::uint32_t key, Record& entry,
                  std::string* failure = nullptr);

extern template bool TryImportKey(ProviderLoader&, std::uint32_t, DspInfo&, std::string*);
extern template bool TryImportKey(ProviderLoader&, std::uint32_t, GpuInfo&, std::string*);
extern template bool TryImportKey(ProviderLoader&, std::uint32_t, CpuInfo&, std::string*);
