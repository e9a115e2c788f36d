/// Calls of a loaded provider's `Soc_GetCapability`: one capability a call, with growth, exact
/// widths and decoding. Used by the imports, under the provider attempt's mutex.
///
/// A call that fails throws `std::runtime_error` with a fixed message; the operations whose names
/// begin with `Try` catch it, return false and leave `out` as it was. They copy the message to
/// `failure` unless that is null. Nothing else is caught: memory running out is no answer of the
/// provider's, except where a size that the provider reported is what memory cannot satisfy, which
/// fails the call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "DynamicSocInfo/provider/ProviderLoader.h"

/// Stands for an exception that left the provider and that no handler here sees, since another
/// compiler made it. It ends the import.
class ForeignException : public std::exception {
 public:
  const char* what() const noexcept override { return "an exception of another compiler"; }
};

/// Calls a query of the provider once. Throws `ForeignException`, and what the provider throws.
std::uint32_t AskOnce(Soc_GetCapabilityFn* query, std::uint32_t component, std::uint32_t key,
                      void* buffer, std::uint64_t* size);

/// The largest answer taken, in bytes; a provider that reports more fails the call. It lies far
/// above any capability and below what would drive the process out of memory.
inline constexpr std::uint64_t LARGEST_ANSWER = std::uint64_t{64} << 20;

/// Makes `buffer` exactly `size` bytes, cut or extended with zero bytes, where a provider named the
/// size. False, with `buffer` as it was, for a size above `LARGEST_ANSWER` or that memory cannot
/// hold.
bool ResizeToReported(std::vector<std::uint8_t>& buffer, std::uint64_t size) noexcept;

/// The bytes that the provider answers, as many as it reports. The call is repeated with a larger
/// buffer as long as the provider asks for more. `initialSize` is the first buffer's, in bytes.
std::vector<std::uint8_t> GetCapabilityBytes(ProviderLoader& provider, std::uint32_t component,
                                             std::uint32_t key, std::size_t initialSize);

/// A counted vector: the number of elements and the elements, unsigned 64-bit each.
std::vector<std::uint64_t> ReadU64Vector(ProviderLoader& provider, std::uint32_t component,
                                         std::uint32_t key);

/// A string: the bytes before the first NUL, which must be there.
std::string ReadCapabilityString(ProviderLoader& provider, std::uint32_t component,
                                 std::uint32_t key);

/// Integers and flags are answers of 8 bytes. Narrower types take their low bits, a flag whether
/// any bit is set.
bool TryGetU64(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
               std::uint64_t& out, std::string* failure = nullptr);
bool TryGetU32(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
               std::uint32_t& out, std::string* failure = nullptr);
bool TryGetU8(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
              std::uint8_t& out, std::string* failure = nullptr);
bool TryGetBool(ProviderLoader& provider, std::uint32_t component, std::uint32_t key, bool& out,
                std::string* failure = nullptr);

/// An IEEE single-precision answer of 4 bytes.
bool TryGetFloat(ProviderLoader& provider, std::uint32_t component, std::uint32_t key, float& out,
                 std::string* failure = nullptr);

/// The low 32 bits of each element of a counted vector.
bool TryGetU32List(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
                   std::vector<std::uint32_t>& out, std::string* failure = nullptr);

bool TryGetString(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
                  std::string& out, std::string* failure = nullptr);
