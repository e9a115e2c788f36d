#include "DynamicSocInfo/chip/ChipCatalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "AnswerProbe.h"
#include "DynamicSocInfo/chip/ChipData.h"

namespace {

TEST(ChipCatalogue, IdentifiersWithoutARowGetTheUnknownRow) {
  std::vector<std::uint32_t> ids = {NO_CHIP_ID, 1, UNDETERMINED_CHIP_ID, FADT_RULE.chipId};
  for (const ChipKey& key : CHIP_KEYS) {
    if (std::ranges::find(CHIP_ROWS, key.chipId, &ChipRow::chipId) == CHIP_ROWS.end()) {
      ids.push_back(key.chipId);
    }
  }
  for (const std::uint32_t id : ids) {
    EXPECT_EQ(BuildChipRecord(id), recordOf({})) << id;
  }
}

TEST(ChipCatalogue, InsertsOnceAndVisitsInOrder) {
  const auto row = [](std::uint32_t model, std::string name) -> SocInfo {
    return {model, {model}, {}, {}, {}, {GpuInfo(0)}, 0, std::move(name)};
  };
  ChipCatalogue catalogue;
  catalogue.Insert(row(20, "second"));
  catalogue.Insert(row(10, "first"));
  catalogue.Insert(row(10, "discarded"));
  std::vector<std::string> names;
  for (const auto& [key, value] : catalogue) {
    names.push_back(value.name);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"first", "second"}));
  EXPECT_EQ(catalogue.At(20).name, "second");
  try {
    catalogue.At(11);
    FAIL() << "there is no such row";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "invalid map<K, T> key");
  }
}

}  // namespace
