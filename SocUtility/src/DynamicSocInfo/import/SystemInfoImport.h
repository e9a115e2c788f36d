/// Imports from a system-info provider, a library with the same three exports as this one.
///
/// The record keeps none of its earlier capabilities. New entries start from default values, take
/// the provider's answers, lists included, and then replace the record's entries.
#pragma once

#include <cstdint>
#include <new>
#include <vector>

#include "DynamicSocInfo/capabilities/SerializedCapability.h"
#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "ZynSystemInfo.h"

/// Replaces the record's DSPs, GPUs and CPU values by the provider's. An unanswered key gets its
/// default. Always returns true. Throws `std::bad_alloc`, and what the provider throws, with the
/// record unchanged.
bool ImportFromSystemInfoProvider(ProviderLoader& provider, SocInfo& record);

/// Asks the provider's `Soc_GetCapabilitySerialized` for one key. The first call offers `buffer`
/// with its present size. The buffer grows as long as the provider asks for more. Returns whether
/// the provider answered; `buffer` then holds exactly the answer. A `std::runtime_error` of the
/// provider also gives false.
bool TryGetSerializedBytes(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
                           std::vector<std::uint8_t>& buffer);

/// Imports one DSP list into `field`, one of the list field types of `DspInfo`. A list that is not
/// answered or is malformed becomes empty. `buffer` is scratch memory that the lists share. Returns
/// whether the list was imported.
template <class List>
bool ImportSerializedList(ProviderLoader& provider, std::uint32_t key, List& field,
                          std::vector<std::uint8_t>& buffer) {
  List* const target = &field;
  bool imported = TryGetSerializedBytes(provider, DSP, key, buffer);
  try {
    imported = imported && deserialize<List>(buffer.data(), buffer.size(), {&target, 1});
  } catch (const std::bad_alloc&) {
    imported = false;  // the provider chose the list's length: too long for memory is malformed
  }
  if (!imported) {
    field.clear();
  }
  return imported;
}
