// The header must compile as C++, where its functions have these types and throw nothing.
#include <type_traits>

#include "ZynSystemInfo.h"

using GetApiVersion = uint32_t (*)(uint8_t*, uint8_t*) noexcept;
using Query = uint32_t (*)(uint64_t, uint64_t, void*, uint64_t*) noexcept;

static_assert(std::is_same_v<decltype(&Soc_GetAPIVersion), GetApiVersion>);
static_assert(std::is_same_v<decltype(&Soc_GetCapability), Query>);
static_assert(std::is_same_v<decltype(&Soc_GetCapabilitySerialized), Query>);
