/// The answers: a capability of a record, in the form that the exported queries give it.
///
/// Arguments have been checked: `buffer` has at least `MinimumSize` bytes for a scalar answer. The
/// key is matched on its low 32 bits. A refusal writes its diagnostic line.
#pragma once

#include <cstdint>

#include "DynamicSocInfo/capabilities/SocInfo.h"

/// The smallest buffer that the scalar query takes for a component and key, supported or not.
/// Compares the whole key.
std::uint64_t MinimumSize(std::uint64_t component, std::uint64_t key);

/// Status of `Soc_GetCapability`, the answer at `buffer`.
std::uint32_t AnswerScalar(const SocInfo& record, std::uint64_t component, std::uint64_t key,
                           void* buffer, std::uint64_t* size);

/// Status of `Soc_GetCapabilitySerialized`, the entries at `buffer`. Throws `std::bad_alloc`.
std::uint32_t AnswerSerialized(const SocInfo& record, std::uint64_t component, std::uint64_t key,
                               void* buffer, std::uint64_t* size);
