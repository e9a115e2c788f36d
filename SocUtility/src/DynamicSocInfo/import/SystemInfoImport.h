/// The import from a system-info provider: a library with this library's own three exports.
///
/// Nothing of the record's earlier capabilities is kept. Fresh entries start from default values
/// and take what the provider answers, its lists included, and then replace the record's.
#pragma once

#include <cstdint>
#include <new>
#include <vector>

#include "DynamicSocInfo/capabilities/SerializedCapability.h"
#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "ZynSystemInfo.h"

/// Replaces the record's DSPs, GPUs and CPU values by the provider's. A key that it does not answer
/// gets its default. Always true. Throws `std::bad_alloc`, with the record as it was.
bool ImportFromSystemInfoProvider(ProviderLoader& provider, SocInfo& record);

/// One answer of the provider's `Soc_GetCapabilitySerialized`. On entry `buffer` is what is offered
/// first; it grows as long as the provider asks for more. On success it is exactly the answer.
bool TryGetSerializedBytes(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
                           std::vector<std::uint8_t>& buffer);

/// Fetches one list of the DSP into `field`, one of the list field types of `DspInfo`; a list that
/// is not answered, or is malformed, becomes empty. `buffer` is scratch, used by one list after
/// another. Returns whether the list was taken.
template <class List>
bool ImportSerializedList(ProviderLoader& provider, std::uint32_t key, List& field,
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
  return imported;
}
