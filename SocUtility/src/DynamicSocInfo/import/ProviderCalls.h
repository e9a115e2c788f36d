/// Calls of a loaded provider's `Soc_GetCapability`: one capability a call. They let the buffer
/// grow, check the answer's width and decode it. Used by the imports, under the provider attempt's
/// mutex.
///
/// A call that fails throws `std::runtime_error` with a fixed message. A function whose name begins
/// with `Try` catches this exception. It then returns false, leaves `out` unchanged, and copies the
/// message to `failure` unless that is null. Other exceptions pass through, `std::bad_alloc`
/// included. One lack of memory is such a failure and no `std::bad_alloc`: the provider reported a
/// size for which there is no memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "DynamicSocInfo/provider/ProviderLoader.h"

/// Thrown in place of an exception of another compiler that left the provider, which no handler
/// here can catch. It ends the import.
class ForeignException : public std::exception {
 public:
  const char* what() const noexcept override { return "an exception of another compiler"; }
};

/// Calls a query of the provider once. Throws `ForeignException`, and whatever the provider throws.
std::uint32_t AskOnce(Soc_GetCapabilityFn* query, std::uint32_t component, std::uint32_t key,
                      void* buffer, std::uint64_t* size);

/// The largest accepted answer in bytes. A call whose provider reports more fails. The limit is far
/// above any real capability, and low enough not to exhaust the process's memory.
inline constexpr std::uint64_t LARGEST_ANSWER = std::uint64_t{64} << 20;

/// The content of a buffer that is about to grow: zeroed, or kept and extended with zero bytes.
enum class WhenGrowing { CLEAR, KEEP };

/// Calls a query, first with `buffer` as it is, and again with a larger buffer as long as the
/// provider asks for more. Then cuts `buffer` to the size that the provider reports, or extends it
/// with zero bytes. A failure leaves `buffer` with the size that it had reached, or empty if
/// `CLEAR` emptied it for a size that memory cannot hold.
void AskGrowing(Soc_GetCapabilityFn* query, std::uint32_t component, std::uint32_t key,
                std::vector<std::uint8_t>& buffer, WhenGrowing whenGrowing);

/// The provider's answer, with the size that it reports. `initialSize` is the first buffer's size
/// in bytes.
std::vector<std::uint8_t> GetCapabilityBytes(ProviderLoader& provider, std::uint32_t component,
                                             std::uint32_t key, std::size_t initialSize);

/// A counted vector: the number of elements and the elements, unsigned 64-bit each.
std::vector<std::uint64_t> ReadU64Vector(ProviderLoader& provider, std::uint32_t component,
                                         std::uint32_t key);

/// A string: the bytes before the first NUL. An answer without a NUL fails.
std::string ReadCapabilityString(ProviderLoader& provider, std::uint32_t component,
                                 std::uint32_t key);

/// Integers and flags are answers of 8 bytes. A narrower integer keeps the low bits. A flag is true
/// if any bit is set.
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
