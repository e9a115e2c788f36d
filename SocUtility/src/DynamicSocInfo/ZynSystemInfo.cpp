// The exported functions: the boundary that no exception crosses.
#include "ZynSystemInfo.h"

#include "DynamicSocInfo/Queries.h"
#include "DynamicSocInfo/ScalarAnswers.h"

std::uint32_t Soc_GetAPIVersion(std::uint8_t* major, std::uint8_t* minor) noexcept {
  *major = 0;
  *minor = 1;
  return SUCCESS;
}

// A warm query is one line of the instruction cache long, so it starts one.
[[gnu::aligned(64)]] std::uint32_t Soc_GetCapability(std::uint64_t component, std::uint64_t key,
                                                     void* buffer, std::uint64_t* size) noexcept
    try {
  if (buffer != nullptr &&
      settledAnswers.load(std::memory_order_acquire)->Write(component, key, buffer, size))
      [[likely]] {
    return SUCCESS;
  }
  return GetCapability(component, key, buffer, size);
} catch (...) {
  return FAILURE;
}

std::uint32_t Soc_GetCapabilitySerialized(std::uint64_t component, std::uint64_t key, void* buffer,
                                          std::uint64_t* size) noexcept try {
  return GetCapabilitySerialized(component, key, buffer, size);
} catch (...) {
  return FAILURE;
}
