/// Byte strings for tests.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// Numbers end to end, each as wide as its type.
template <class Number>
Bytes packed(const std::vector<Number>& numbers) {
  Bytes bytes(numbers.size() * sizeof(Number));
  if (!bytes.empty()) {
    std::memcpy(bytes.data(), numbers.data(), bytes.size());
  }
  return bytes;
}
inline Bytes words(const std::vector<std::uint64_t>& numbers) { return packed(numbers); }
inline Bytes halfWords(const std::vector<std::uint32_t>& numbers) { return packed(numbers); }

inline Bytes padded(Bytes bytes, std::size_t size, std::uint8_t filler = 0) {
  bytes.resize(size, filler);
  return bytes;
}

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}
