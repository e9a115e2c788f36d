/// The serialized query's answers: the lists of a record.
#pragma once

#include <cstdint>

#include "DynamicSocInfo/capabilities/SocInfo.h"

/// Writes the list of a component and key to `buffer`, which is not null and has `*size` bytes.
/// Sets `*size` as `Soc_GetCapabilitySerialized` does and returns its status; allocates nothing. A
/// refusal writes its diagnostic line.
std::uint32_t AnswerList(const SocInfo& record, std::uint64_t component, std::uint64_t key,
                         void* buffer, std::uint64_t* size);
