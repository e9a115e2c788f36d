// A system-info provider's answers replace the record's values. The four lists share one scratch
// buffer.
#include "DynamicSocInfo/import/SystemInfoImport.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

#include "AnswerProbe.h"
#include "DynamicSocInfo/import/ProviderCalls.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "FakeProvider.h"

namespace {

constexpr auto TOO_SMALL = INSUFFICIENT_SIZE;

class SystemInfoImport : public testing::Test {
 protected:
  SystemInfoImport() { provider_.BindSerialized(); }

  /// A record with other values in several entries.
  static SocInfo OtherRecord() {
    SocInfo record = recordOf({}, GpuInfo(50), {.cap1 = 50, .cap2 = 50});
    record.dsps.front().cap1 = 50;
    record.dsps.front().cap16 = {50};
    record.gpus.front().cap13 = 50;
    record.dsps.emplace_back();
    record.gpus.emplace_back(50);
    return record;
  }

  /// That record after an import over it.
  SocInfo Import() {
    SocInfo record = OtherRecord();
    EXPECT_TRUE(ImportProviderCapabilities(provider_.loader, record));
    return record;
  }

  FakeProvider provider_;
};

TEST_F(SystemInfoImport, AsksInOrderAndDefaultsWhatIsNotAnswered) {
  EXPECT_EQ(Import(), recordOf({}));
  std::vector<Key> keys;
  for (const auto& [component, first, last] : {std::array<std::uint32_t, 3>{DSP, 1, 34},
                                               {DSP, 36, 48},
                                               {GPU, 1, 1},
                                               {GPU, 4, 12},
                                               {CPU, 1, 2}}) {
    for (std::uint32_t key = first; key <= last; ++key) {
      keys.emplace_back(component, key);
    }
  }
  EXPECT_EQ(provider_.asked, keys);
}

TEST_F(SystemInfoImport, EndedByAnExceptionLeavesTheRecordAsItWas) {
  for (const Key& key : {Key(GPU, 12), Key(CPU, 2)}) {
    provider_.scalars[key] = [](void*, std::uint64_t*) -> std::uint32_t {
      throw std::logic_error("fault");
    };
    SocInfo record = OtherRecord();
    EXPECT_THROW(ImportProviderCapabilities(provider_.loader, record), std::logic_error);
    EXPECT_EQ(record, OtherRecord());
    provider_.scalars.clear();
  }
}

TEST_F(SystemInfoImport, AThrownRuntimeErrorFailsTheListAndNoOtherExceptionDoes) {
  provider_.lists = {
      {{DSP, 16}, answers(halfWords({0, 5}))},
      {{DSP, 46},
       [](void*, std::uint64_t*) -> std::uint32_t { throw std::runtime_error("fault"); }},
      {{DSP, 47}, answers(halfWords({0}) + padded({'a'}, 32))}};
  const DspInfo dsp = Import().dsps.front();
  EXPECT_EQ(dsp.cap16, U32List{5});
  EXPECT_EQ(dsp.cap46, U32ByPosition{});
  EXPECT_EQ(dsp.cap47, NameList{"a"});

  provider_.lists[{DSP, 46}] = [](void*, std::uint64_t*) -> std::uint32_t {
    throw std::bad_alloc();
  };
  SocInfo record = OtherRecord();
  EXPECT_THROW(ImportProviderCapabilities(provider_.loader, record), std::bad_alloc);
  EXPECT_EQ(record, OtherRecord());
}

TEST_F(SystemInfoImport, TakesTheNumbersTheNameAndTheListsOfTheFirstDsp) {
  const Bytes minusFour = words({0xFFFFFFFFFFFFFFFC});
  provider_.scalars = {{{DSP, 45}, answers(minusFour)},
                       {{GPU, 4}, answers({'n', 0})},
                       {{GPU, 12}, answers(minusFour)},
                       {{CPU, 1}, answers(minusFour)},
                       {{CPU, 2}, answers(minusFour)}};
  provider_.lists = {{{DSP, 16}, answers(halfWords({0, 5, 1, 9, 0, 6}))},
                     {{DSP, 46}, answers(halfWords({0, 7, 0, 9}))},
                     {{DSP, 47}, answers(halfWords({0}) + padded({'a'}, 32))},
                     {{DSP, 48}, answers(halfWords({0, 3}) + padded({'b'}, 32))}};
  DspInfo dsp;
  dsp.cap45 = -4;
  dsp.cap16 = {5, 6};
  dsp.cap46 = {{0, 7}, {1, 9}};
  dsp.cap47 = {"a"};
  dsp.cap48 = {{0, {"b", 3}}};
  GpuInfo gpu(0);
  gpu.name = "n";
  gpu.cap12 = 0xFFFFFFFFFFFFFFFC;
  EXPECT_EQ(Import(), recordOf(dsp, gpu, {.cap1 = -4, .cap2 = 0xFFFFFFFFFFFFFFFC}));
}

TEST_F(SystemInfoImport, ListsShareAScratchBuffer) {
  const Reply fails = {FAILURE, 0};
  struct Step {  // of one list key
    std::vector<Reply> script;
    std::vector<std::uint64_t> offered;
    std::size_t entries;
  };
  struct {
    const char* name;
    Step steps[4];  // keys 16, 46, 47, 48
  } const ROWS[] = {
      {"a list that grew is offered whole to the next, which cuts it",
       {{{{TOO_SMALL, 24}, {SUCCESS, 24}}, {8, 24}, 3},
        {{{SUCCESS, 16}}, {24}, 2},
        {{{TOO_SMALL, 72}, {SUCCESS, 36}}, {16, 72}, 1},
        {{{TOO_SMALL, 40}, {SUCCESS, 40}}, {36, 40}, 1}}},
      {"a failed call keeps the length it had reached",
       {{{{TOO_SMALL, 24}, fails}, {8, 24}, 0},
        {{{TOO_SMALL, 24}}, {24}, 0},
        {{{TOO_SMALL, 8}}, {24}, 0},
        {{{TOO_SMALL, 30}, {TOO_SMALL, 80}, {SUCCESS, 80}}, {24, 30, 80}, 2}}},
      {"an answer that is no list still sets the length, also beyond what was offered",
       {{{{SUCCESS, 20}}, {8}, 0},
        {{{SUCCESS, 12}}, {20}, 0},
        {{{SUCCESS, 0}}, {12}, 0},
        {{{SUCCESS, 40}}, {0}, 1}}},
      {"sizes that nobody can mean leave the buffer alone",
       {{{{SUCCESS, ~std::uint64_t{1}}}, {8}, 0},
        {{{TOO_SMALL, LARGEST_ANSWER + 1}}, {8}, 0},
        {{fails}, {8}, 0},
        {{fails}, {8}, 0}}},
  };
  const std::uint64_t keys[] = {16, 46, 47, 48};
  for (const auto& row : ROWS) {
    SCOPED_TRACE(row.name);
    for (std::size_t i = 0; i < 4; ++i) {
      provider_.lists[{DSP, keys[i]}] = replies(row.steps[i].script);
    }
    provider_.offered.clear();
    const DspInfo dsp = Import().dsps.front();
    const std::size_t entries[] = {dsp.cap16.size(), dsp.cap46.size(), dsp.cap47.size(),
                                   dsp.cap48.size()};
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ((provider_.offered[{DSP, keys[i]}]), row.steps[i].offered) << keys[i];
      EXPECT_EQ(entries[i], row.steps[i].entries) << keys[i];
    }
  }
}

TEST_F(SystemInfoImport, AListThatIsNotTakenBecomesEmpty) {
  for (const Behaviour& behaviour : {replies({{FAILURE, 8}}), exhausts(answers(Bytes(16)))}) {
    provider_.lists[{DSP, 16}] = behaviour;
    U32List list = {50};
    Bytes scratch(8);
    ImportSerializedList(provider_.loader, 16, list, scratch);
    EXPECT_EQ(list, U32List());
  }
}

}  // namespace
