/// How a number or flag field is encoded in a scalar answer; shared by the answer itself and by the
/// answers encoded in advance.
#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>

static_assert(std::endian::native == std::endian::little, "answers are stored as they stand");

/// Bytes that the answer of a number or flag of type `T` takes.
template <class T>
inline constexpr std::uint64_t ANSWER_WIDTH = std::is_same_v<T, float> ? 4 : 8;

/// The answer's bytes, of which `ANSWER_WIDTH` count: an integer or flag widened to 64 bits by its
/// own signedness, or a float's IEEE single-precision form.
template <class T>
constexpr std::uint64_t answerBits(T value) {
  if constexpr (std::is_same_v<T, float>) {
    return std::bit_cast<std::uint32_t>(value);
  } else if constexpr (std::is_signed_v<T>) {
    return static_cast<std::uint64_t>(std::int64_t{value});
  } else {
    return value;
  }
}
