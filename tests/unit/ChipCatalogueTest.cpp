// The catalogue, and the rules that the data it is built of must keep.
#include "DynamicSocInfo/chip/ChipCatalogue.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

#include "DynamicSocInfo/chip/ChipData.h"

namespace {

TEST(ChipCatalogue, InsertsOnceAndVisitsInOrder) {
  const auto row = [](std::uint32_t model, std::string name) -> SocInfo {
    return {model, {model}, {}, {}, {}, {GpuInfo(0)}, 0, std::move(name)};
  };
  ChipCatalogue catalogue;
  catalogue.Insert(row(20, "second"));
  catalogue.Insert(row(10, "first"));
  catalogue.Insert(row(10, "discarded"));
  EXPECT_EQ(catalogue.begin()->second.name, "first");
  EXPECT_EQ(catalogue.At(20).name, "second");
  EXPECT_THROW(catalogue.At(11), std::out_of_range);
}

TEST(ChipData, EveryChipHasItsKeysAndAtMostOneCompleteRow) {
  constexpr std::size_t LONGEST_GPU_NAME = 12;
  std::set<std::uint64_t> keys;
  std::set<std::uint32_t> chips = {FADT_RULE.chipId};
  for (const auto& [pptt, chipId] : CHIP_KEYS) {
    EXPECT_NE(pptt, 0U) << "0 means that there is no key";
    EXPECT_TRUE(keys.insert(pptt).second) << std::hex << "twice: 0x" << pptt;
    EXPECT_NE(chipId, FADT_RULE.chipId) << "the FADT's chip has no key";
    chips.insert(chipId);
  }
  EXPECT_EQ(chips.size(), 8U) << "add the new chips, unless two chips have one identifier";
  std::int32_t previousModel = 0;
  for (const ChipRow& row : CHIP_ROWS) {
    SCOPED_TRACE(row.socModel);
    EXPECT_GT(row.socModel, previousModel) << "sort the rows by their model";
    previousModel = row.socModel;
    EXPECT_EQ(chips.erase(row.chipId), 1U)
        << "no key leads to the row, or another row has its chip";
    EXPECT_NE(row.names[0], row.names[1]);

    const SocInfo record = BuildChipRecord(row.chipId);
    EXPECT_TRUE(record.isKnownChip);
    EXPECT_FALSE(record.name.empty());
    EXPECT_EQ(record.sizeLimit, SIZE_LIMIT);
    ASSERT_EQ(record.dsps.size(), 1U);
    EXPECT_EQ(record.dsps.front().cap41, row.socModel) << "call fillCommon first";
    EXPECT_EQ(record.dsps.front().cap16.size(), 1U) << "this list has one element";
    ASSERT_EQ(record.gpus.size(), 1U);
    EXPECT_NE(record.gpus.front().name, GpuInfo(0).name) << "set the GPU's name";
    EXPECT_LE(record.gpus.front().name.size(), LONGEST_GPU_NAME) << "shorten the GPU's name";
  }
  // Those without a row, and what can be no chip's identifier.
  chips.insert({NO_CHIP_ID, 1, UNDETERMINED_CHIP_ID});
  const SocInfo unknown(0, {0}, {}, {}, {}, {GpuInfo(0)}, 0x1000000000, std::string("UNKNOWN_PLX"));
  for (const std::uint32_t chipId : chips) {
    EXPECT_EQ(BuildChipRecord(chipId), unknown) << chipId;
  }
}

}  // namespace
