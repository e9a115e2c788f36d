// The rows of the catalogue as the product data and the rules of the record make them.
#include "chip/ChipCatalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "AnswerProbe.h"
#include "chip/ChipData.h"

namespace {

TEST(ChipCatalogue, IdentifiersWithoutARowGetTheUnknownRow) {
  std::vector<std::uint32_t> ids = {0, 1, 0xFFFFFFFF, FADT_RULE.chipId};
  for (const ChipKey& key : CHIP_KEYS) {
    if (std::ranges::find(CHIP_ROWS, key.chipId, &ChipRow::chipId) == CHIP_ROWS.end()) {
      ids.push_back(key.chipId);
    }
  }
  for (const std::uint32_t id : ids) {
    EXPECT_EQ(BuildChipRecord(id), recordOf({})) << id;
  }
}

// The fields of one type that the product data sets.
#define COMMON_DSP(of)                                                                            \
  of.cap1, of.cap2, of.cap7, of.cap9, of.cap10, of.cap11, of.cap12, of.cap14, of.cap15, of.cap17, \
      of.cap18, of.cap19, of.cap20, of.cap21, of.cap22, of.cap24, of.cap26, of.cap27, of.cap28
#define OWN_DSP(of) \
  of.cap3, of.cap8, of.cap23, of.cap25, of.cap30, of.cap31, of.cap34, of.cap39, of.cap40
#define COMMON_GPU(of) \
  of.cap5, of.cap6, of.cap7, of.cap8, of.cap9, of.cap10, of.cap11, of.cap12, of.cap13

TEST(ChipCatalogue, KnownRowsHoldTheirDataAndDefaults) {
  for (const ChipRow& row : CHIP_ROWS) {
    const auto& common = COMMON_CAPABILITIES;
    DspInfo dsp;
    std::tie(COMMON_DSP(dsp)) = std::tie(COMMON_DSP(common.dsp));
    std::tie(OWN_DSP(dsp)) = std::tie(OWN_DSP(row.dsp));
    dsp.cap16 = {common.dsp.cap16};
    dsp.cap41 = row.socModel;
    GpuInfo gpu(row.gpu.cap1);
    std::tie(COMMON_GPU(gpu)) = std::tie(COMMON_GPU(common.gpu));
    gpu.name = row.gpu.name;
    SocInfo expected(static_cast<std::uint32_t>(row.socModel), {row.chipId}, {}, {dsp},
                     {.cap1 = 0, .cap2 = common.cpu.cap2}, {gpu}, 0x1000000000,
                     std::string(row.name));
    if (!row.secondName.empty()) {
      expected.nameSet.emplace(row.secondName);
    }
    expected.isKnownChip = true;
    EXPECT_EQ(BuildChipRecord(row.chipId), expected) << row.name;
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
