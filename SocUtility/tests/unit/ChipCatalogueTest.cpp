// The rows of the catalogue as the product data and the rules of the record make them.
#include "chip/ChipCatalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
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

/// The scalar DSP keys that the product data sets, and their values, of one row.
std::map<std::uint32_t, std::uint64_t> dspDataOf(const ChipRow& row) {
  const auto& common = COMMON_CAPABILITIES.dsp;
  const auto wide = [](std::int64_t value) { return static_cast<std::uint64_t>(value); };
  // One number makes both the key and the field's name.
#define COMMON(n) \
  { n, common.cap##n }
#define OWN(n) \
  { n, row.dsp.cap##n }
  // clang-format off
  return {{1, wide(common.cap1)}, {2, wide(common.cap2)}, {3, wide(row.dsp.cap3)},
          {41, wide(row.socModel)}, COMMON(7), COMMON(9), COMMON(10), COMMON(11), COMMON(12),
          COMMON(14), COMMON(15), COMMON(17), COMMON(18), COMMON(19), COMMON(20), COMMON(21),
          COMMON(22), COMMON(24), COMMON(26), COMMON(27), COMMON(28), OWN(8), OWN(23), OWN(25),
          OWN(30), OWN(31), OWN(34), OWN(39), OWN(40)};
  // clang-format on
#undef COMMON
#undef OWN
}

TEST(ChipCatalogue, KnownRowsAnswerTheirDataAndDefaults) {
  for (const ChipRow& row : CHIP_ROWS) {
    SCOPED_TRACE(row.name);
    const SocInfo record = BuildChipRecord(row.chipId);
    const auto data = dspDataOf(row);
    for (std::uint32_t key = 1; key <= 45; ++key) {
      const auto given = data.find(key);
      EXPECT_EQ(ask(AnswerScalar, record, DSP, key).buffer,
                given == data.end() ? ask(AnswerScalar, recordOf({}), DSP, key).buffer
                                    : bufferWith(words({given->second})))
          << "DSP key " << key;
    }
    DspInfo onlyList;
    onlyList.cap16 = {COMMON_CAPABILITIES.dsp.cap16};
    for (const std::uint32_t key : {16U, 46U, 47U, 48U}) {
      EXPECT_EQ(ask(AnswerSerialized, record, DSP, key).buffer,
                ask(AnswerSerialized, recordOf(onlyList), DSP, key).buffer);
    }

    GpuInfo gpu(row.gpu.cap1);
    const auto& common = COMMON_CAPABILITIES.gpu;
    gpu.name = row.gpu.name;
    std::tie(gpu.cap5, gpu.cap6, gpu.cap7, gpu.cap8, gpu.cap9, gpu.cap10, gpu.cap11, gpu.cap12,
             gpu.cap13) = std::tie(common.cap5, common.cap6, common.cap7, common.cap8, common.cap9,
                                   common.cap10, common.cap11, common.cap12, common.cap13);
    std::set<std::string> names = {std::string(row.name)};
    if (!row.secondName.empty()) {
      names.emplace(row.secondName);
    }
    SocInfo expected(static_cast<std::uint32_t>(row.socModel), {row.chipId}, {},
                     {record.dsps.front()}, {.cap1 = 0, .cap2 = COMMON_CAPABILITIES.cpu.cap2},
                     {gpu}, 0x1000000000, std::string(row.name));
    expected.nameSet = names;
    expected.isKnownChip = true;
    EXPECT_EQ(record, expected);
  }
}

TEST(ChipCatalogue, DataHasEachSpecialCase) {
  const auto rowsWith = [](auto property) { return std::ranges::count_if(CHIP_ROWS, property); };
  EXPECT_GE(rowsWith([](const ChipRow& row) { return !row.secondName.empty(); }), 1);
  EXPECT_GE(rowsWith([](const ChipRow& row) { return row.gpu.name.ends_with(' '); }), 1);
  EXPECT_GE(rowsWith([](const ChipRow& row) { return row.gpu.name.size() == 12; }), 1);
}

SocInfo row(std::uint32_t model, std::string name) {
  return {model, {model}, {}, {}, {}, {GpuInfo(0)}, 0, std::move(name)};
}

TEST(ChipCatalogue, InsertsOnceAndVisitsInOrder) {
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

TEST(SocInfo, ConstructorsCompleteTheRow) {
  EXPECT_EQ(row(1, "one").dsps, std::vector{DspInfo{}}) << "an empty list receives a default DSP";
  const SocInfo two(1, {1}, {"other"}, {DspInfo{}, DspInfo{}}, {}, {GpuInfo(0)}, 0,
                    std::vector<std::string>{"b", "a", "b"});
  EXPECT_EQ(two.dsps.size(), 2U);
  EXPECT_EQ(two.altNames, std::vector<std::string>{"other"});
  EXPECT_EQ(two.name, "b");
  EXPECT_EQ(two.nameSet, (std::set<std::string>{"a", "b"}));
}

}  // namespace
