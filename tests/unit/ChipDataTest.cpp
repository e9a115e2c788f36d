// The rules that the product data must keep, over the keys, the rows and the catalogue built of
// them.
#include "DynamicSocInfo/chip/ChipData.h"

#include <gtest/gtest.h>

#include <set>

#include "DynamicSocInfo/chip/ChipCatalogue.h"

namespace {

bool canBeChipId(std::uint32_t chipId) {
  return chipId != NO_CHIP_ID && chipId != UNDETERMINED_CHIP_ID;
}

/// How many keys lead to each chip, in the order of the keys. The keys of a chip must be together.
std::vector<std::size_t> keysPerChip() {
  std::vector<std::size_t> counts;
  std::set<std::uint32_t> chips;
  std::uint32_t current = NO_CHIP_ID;
  for (const ChipKey& key : CHIP_KEYS) {
    if (key.chipId != current) {
      current = key.chipId;
      counts.push_back(0);
      EXPECT_TRUE(chips.insert(current).second) << "two groups of keys: chip " << current;
    }
    ++counts.back();
  }
  return counts;
}

// The data set at a glance, so that a line lost or added by mistake is seen: change it with the
// data.
TEST(ChipData, HasTheseCounts) {
  EXPECT_EQ(keysPerChip(), (std::vector<std::size_t>{5, 3, 3, 1, 5, 1, 1}));
  EXPECT_EQ(CHIP_ROWS.size(), 3U);
}

TEST(ChipData, KeysAreUniqueAndStandForChips) {
  std::set<std::uint64_t> keys;
  for (const ChipKey& key : CHIP_KEYS) {
    EXPECT_NE(key.pptt, 0U) << "0 means that there is no key";
    EXPECT_TRUE(keys.insert(key.pptt).second) << std::hex << "twice: 0x" << key.pptt;
    EXPECT_TRUE(canBeChipId(key.chipId)) << key.chipId;
    EXPECT_NE(key.chipId, FADT_RULE.chipId) << "the FADT's chip has no key";
  }
  EXPECT_TRUE(canBeChipId(FADT_RULE.chipId));
}

TEST(ChipData, RowsAreOrderedReachableAndComplete) {
  constexpr std::size_t LONGEST_GPU_NAME = 12;
  std::set<std::uint32_t> idsOfKeys;
  for (const ChipKey& key : CHIP_KEYS) {
    idsOfKeys.insert(key.chipId);
  }
  std::int32_t previousModel = 0;
  std::set<std::uint32_t> idsOfRows;
  for (const ChipRow& row : CHIP_ROWS) {
    SCOPED_TRACE(row.socModel);
    EXPECT_GT(row.socModel, previousModel);
    previousModel = row.socModel;
    EXPECT_TRUE(idsOfKeys.contains(row.chipId)) << "no key leads to the row";
    EXPECT_TRUE(idsOfRows.insert(row.chipId).second) << "two rows of one chip";
    EXPECT_FALSE(row.names[0].empty());
    EXPECT_NE(row.names[0], row.names[1]);

    const SocInfo record = BuildChipRecord(row.chipId);
    EXPECT_TRUE(record.isKnownChip);
    EXPECT_EQ(record.socModel, static_cast<std::uint32_t>(row.socModel));
    EXPECT_EQ(record.chipIds, std::vector{row.chipId});
    EXPECT_EQ(record.name, row.names[0]);
    EXPECT_EQ(record.nameSet.size(), row.names[1].empty() ? 1U : 2U);
    EXPECT_EQ(record.altNames, std::vector<std::string>{});
    EXPECT_EQ(record.sizeLimit, SIZE_LIMIT);
    EXPECT_EQ(record.cpu.cap1, 0);
    ASSERT_EQ(record.dsps.size(), 1U);
    EXPECT_EQ(record.dsps.front().cap41, row.socModel);
    EXPECT_EQ(record.dsps.front().cap16.size(), 1U);
    ASSERT_EQ(record.gpus.size(), 1U);
    EXPECT_FALSE(record.gpus.front().name.empty());
    EXPECT_LE(record.gpus.front().name.size(), LONGEST_GPU_NAME);
  }
}

}  // namespace
