// The parsers of table bytes: what they find, and that they never read past the delivered bytes.
// Every table is a heap block of exactly its size, so AddressSanitizer catches a read past the end.
#include "DynamicSocInfo/chip/AcpiTables.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Bytes.h"

namespace {

constexpr std::size_t HEADER_SIZE = 36;
constexpr std::uint64_t LEVEL_1 = 0xFEDCBA9800000011;
constexpr std::uint64_t LEVEL_2 = 0x8000000700010002;

Bytes cut(const Bytes& bytes, std::size_t size) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

Bytes withClaim(Bytes table, std::uint32_t length) {
  const Bytes claim = halfWords({length});
  std::copy(claim.begin(), claim.end(), table.begin() + 4);
  return table;
}

/// A table of these structures whose header claims their true length.
Bytes table(const Bytes& structures) {
  const Bytes bytes = padded({'P', 'P', 'T', 'T'}, HEADER_SIZE, 2) + structures;
  return withClaim(bytes, static_cast<std::uint32_t>(bytes.size()));
}

Bytes structure(std::uint8_t type, std::uint8_t length, std::size_t size) {
  return padded({type, length}, size, 2);  // full of bytes that look like an ID structure's type
}

Bytes idStructure(std::uint64_t level1 = LEVEL_1, std::uint8_t length = 30) {
  return padded({2, length}, 8) + words({level1, LEVEL_2}) + Bytes(6);
}

/// Checks the walk over `bytes` cut at each length and with each length claimed: the ID structure
/// at `offset` (0 for none) is found exactly when its first 24 bytes are delivered and claimed.
void expectFound(const Bytes& bytes, std::size_t offset) {
  const auto check = [&](const Bytes& delivered, std::size_t claimed) {
    const auto found = FindPpttIdStructure(delivered);
    const bool expected = offset != 0 && offset + 24 <= std::min(delivered.size(), claimed);
    ASSERT_EQ(found.has_value(), expected) << delivered.size() << " of " << claimed << " bytes";
    if (found) {
      EXPECT_EQ(found->offset, offset);
      const auto ids = bytes.begin() + static_cast<std::ptrdiff_t>(offset + 8);
      EXPECT_EQ(words({found->level1Id, found->level2Id}), Bytes(ids, ids + 16));
    }
  };
  const auto full = static_cast<std::uint32_t>(bytes.size());
  for (std::uint32_t size = 0; size <= full; ++size) {
    check(cut(bytes, size), full);
    check(withClaim(bytes, size), size);
  }
  for (const std::uint32_t more : {full + 1, full + 100, 0x80000000U, 0xFFFFFFFFU}) {
    check(withClaim(bytes, more), more);
  }
}

TEST(PpttWalk, FindsTheFirstIdStructure) {
  struct {
    const char* name;
    Bytes structures;
    std::size_t offset;
  } const ROWS[] = {
      {"the only structure", idStructure(), 36},
      {"after a processor node and a cache full of twos",
       structure(0, 20, 20) + structure(1, 24, 24) + idStructure(), 80},
      {"after structures of one byte and of two", Bytes{0, 1, 2} + idStructure(), 39},
      {"after the longest structure", structure(0, 255, 255) + idStructure(), 291},
      {"after a structure without length", structure(0, 0, 20) + idStructure(), 0},
      {"itself without length", idStructure(LEVEL_1, 0), 0},
      {"whose own length is 1", idStructure(LEVEL_1, 1), 36},
      {"behind a structure that ends beyond the table", structure(0, 200, 20) + idStructure(), 0},
      {"of two, the first", idStructure() + idStructure(1), 36},
  };
  for (const auto& row : ROWS) {
    SCOPED_TRACE(row.name);
    expectFound(table(row.structures), row.offset);
  }
}

TEST(PpttKey, IsTheLowHalfOfLevel1OverAllOfLevel2) {
  EXPECT_EQ(PpttKey({0, 0x2, 0x100000007}), 0x300000007U);
  EXPECT_EQ(PpttKey({0, 0xFFFFFFFF00000004, 0x9}), 0x400000009U);
  EXPECT_EQ(PpttKey({0, 0xFEDCBA9876543210, 0x8000000000000001}), 0xF654321000000001U);
}

TEST(FadtOemRevision, StandsAt24) {
  const Bytes fadt = Bytes(24, 0xEE) + halfWords({0x92000078}) + Bytes(36, 0xEE);
  for (std::size_t size = 0; size <= fadt.size(); ++size) {
    const auto expected = size < 28 ? std::nullopt : std::optional<std::uint32_t>(0x92000078);
    EXPECT_EQ(FadtOemRevision(cut(fadt, size)), expected) << size;
  }
}

}  // namespace
