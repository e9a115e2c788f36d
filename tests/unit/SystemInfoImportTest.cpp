// What a system-info provider is asked, and the effect of calls that fail.
#include "DynamicSocInfo/import/SystemInfoImport.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "AllocationFault.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/import/ProviderCalls.h"
#include "FakeProvider.h"

namespace {

constexpr auto TOO_SMALL = INSUFFICIENT_SIZE;

class SystemInfoImport : public testing::Test {
 protected:
  SystemInfoImport() { provider_.loader.getCapabilitySerialized = FakeProvider::Ask; }

  /// A record of an unknown chip with another value in each component.
  static SocInfo OtherRecord() {
    SocInfo record = BuildChipRecord(0);
    record.dsps.front().cap1 = record.gpus.front().cap1 = record.cpu.cap1 = 50;
    return record;
  }

  FakeProvider provider_;
};

TEST_F(SystemInfoImport, AsksInOrderAndDefaultsWhatIsNotAnswered) {
  SocInfo record = OtherRecord();
  ImportFromSystemInfoProvider(provider_.loader, record);
  EXPECT_EQ(record, BuildChipRecord(0));
  std::vector<Key> keys;
  const auto addKeys = [&](std::uint32_t component, std::uint32_t first, std::uint32_t last) {
    for (std::uint32_t key = first; key <= last; ++key) {
      keys.emplace_back(component, key);
    }
  };
  addKeys(DSP, 1, 34);
  addKeys(DSP, 36, 48);
  addKeys(GPU, 1, 1);
  addKeys(GPU, 4, 12);
  addKeys(CPU, 1, 2);
  EXPECT_EQ(provider_.asked, keys);
}

TEST_F(SystemInfoImport, EndedByAnExceptionLeavesTheRecordAsItWas) {
  for (const Key& key : {Key(DSP, 46), Key(GPU, 12), Key(CPU, 2)}) {
    provider_.script = {{key, {{SUCCESS, 0, {}, [] { throw std::logic_error("fault"); }}}}};
    SocInfo record = OtherRecord();
    EXPECT_THROW(ImportFromSystemInfoProvider(provider_.loader, record), std::logic_error);
    EXPECT_EQ(record, OtherRecord());
  }
}

TEST_F(SystemInfoImport, ListsShareAScratchBuffer) {
  const Reply throws = {SUCCESS, 8, {}, [] { throw std::runtime_error("fault"); }};
  // Memory runs out after the first of two entries.
  const Reply exhausts = {SUCCESS, 80, {}, [] { AllocationFault::FailNext(2); }};
  struct Step {  // of one list key
    std::vector<Reply> script;
    Sizes offered;
    std::size_t entries;
  };
  struct {
    const char* name;
    Step steps[4];  // keys 16, 46, 47, 48
  } const ROWS[] = {
      {"an answer sets the length that the next list is offered, also beyond what was offered",
       {{{{TOO_SMALL, 24}, {SUCCESS, 24}}, {8, 24}, 3},
        {{{SUCCESS, 16}}, {24}, 2},
        {{{TOO_SMALL, 72}, {SUCCESS, 36}}, {16, 72}, 1},
        {{{SUCCESS, 40}}, {36}, 1}}},
      {"a failed call keeps the length it had reached, and what is no list sets it",
       {{{{TOO_SMALL, 24}, {FAILURE, 0}}, {8, 24}, 0},
        {{{TOO_SMALL, 24}}, {24}, 0},
        {{{SUCCESS, 20}}, {24}, 0},
        {{{TOO_SMALL, 30}, {TOO_SMALL, 80}, {SUCCESS, 80}}, {20, 30, 80}, 2}}},
      {"what nobody can hold is no list, nor what throws",
       {{{{SUCCESS, ~std::uint64_t{1}}}, {8}, 0},
        {{throws}, {8}, 0},
        {{{TOO_SMALL, LARGEST_ANSWER + 1}}, {8}, 0},
        {{{TOO_SMALL, 80}, exhausts}, {8, 80}, 0}}},
  };
  const std::uint64_t keys[] = {16, 46, 47, 48};
  for (const auto& row : ROWS) {
    SCOPED_TRACE(row.name);
    for (std::size_t i = 0; i < 4; ++i) {
      provider_.script[{DSP, keys[i]}] = row.steps[i].script;
    }
    provider_.offered.clear();
    SocInfo record = OtherRecord();
    ImportFromSystemInfoProvider(provider_.loader, record);
    const DspInfo& dsp = record.dsps.front();
    const std::size_t entries[] = {dsp.cap16.size(), dsp.cap46.size(), dsp.cap47.size(),
                                   dsp.cap48.size()};
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ((provider_.offered[{DSP, keys[i]}]), row.steps[i].offered) << keys[i];
      EXPECT_EQ(entries[i], row.steps[i].entries) << keys[i];
    }
  }
}

}  // namespace
