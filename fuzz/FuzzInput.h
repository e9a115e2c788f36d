/// The bytes of a fuzzer's input, taken one after the other.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

/// Ends the run as a finding unless `holds`.
inline void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

  bool IsEmpty() const { return rest_.empty(); }

  /// The next number, little-endian; bytes that the input lacks are 0.
  template <class Number>
  Number TakeNumber() {
    Number number{};
    const std::span<const std::uint8_t> bytes = Take(sizeof number);
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t*>(&number));
    return number;
  }

  /// The next `count` bytes, fewer at the end, in a block of exactly their size: a sanitizer sees
  /// what reads past it.
  std::vector<std::uint8_t> TakeBytes(std::size_t count) {
    const std::span<const std::uint8_t> bytes = Take(count);
    return {bytes.begin(), bytes.end()};
  }

  std::vector<std::uint8_t> TakeRest() { return TakeBytes(rest_.size()); }

 private:
  std::span<const std::uint8_t> Take(std::size_t count) {
    const std::span<const std::uint8_t> bytes = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(bytes.size());
    return bytes;
  }

  std::span<const std::uint8_t> rest_;
};

/// An input that describes a machine: the FADT's length (2 bytes), the FADT, the PPTT.
struct FuzzTables {
  explicit FuzzTables(FuzzInput input)
      : fadt(input.TakeBytes(input.TakeNumber<std::uint16_t>())), pptt(input.TakeRest()) {}

  std::vector<std::uint8_t> fadt;
  std::vector<std::uint8_t> pptt;
};
