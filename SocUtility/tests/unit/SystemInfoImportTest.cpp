// The import from a system-info provider, which replaces what the record held, and the scratch
// buffer that its four lists share.
#include "import/SystemInfoImport.h"

#include <gtest/gtest.h>

#include "AnswerProbe.h"
#include "FakeProvider.h"
#include "KeyRows.h"
#include "import/ProviderCalls.h"
#include "import/ProviderImport.h"

namespace {

using Numbers = std::vector<std::uint64_t>;
constexpr auto TOO_SMALL = INSUFFICIENT_SIZE;

class SystemInfoImport : public testing::Test {
 protected:
  SystemInfoImport() { provider_.BindSerialized(); }

  /// The record after an import over one that held other values in several entries.
  SocInfo Import() {
    DspInfo dsp;
    dsp.cap1 = 50;
    dsp.cap16 = {50};
    GpuInfo gpu(50);
    gpu.cap13 = 50;
    SocInfo record = recordOf(dsp, gpu, {.cap1 = 50, .cap2 = 50});
    record.dsps.push_back(dsp);
    record.gpus.push_back(gpu);
    EXPECT_TRUE(ImportProviderCapabilities(provider_.loader, record));
    return record;
  }

  FakeProvider provider_;
};

TEST_F(SystemInfoImport, AsksInOrderAndDefaultsWhatIsNotAnswered) {
  EXPECT_EQ(Import(), recordOf({}));
  std::vector<Key> keys;
  for (std::uint64_t key = 1; key <= 48; ++key) {
    if (key != 35) {
      keys.emplace_back(DSP, key);
    }
  }
  for (const std::uint64_t key : Numbers{1, 4, 5, 6, 7, 8, 9, 10, 11, 12}) {
    keys.emplace_back(GPU, key);
  }
  keys.emplace_back(CPU, 1);
  keys.emplace_back(CPU, 2);
  EXPECT_EQ(each(provider_.TakeAsked(), &Asked::key), keys);
}

TEST_F(SystemInfoImport, AnswersLandInTheFieldOfTheirKeyOnly) {
  for (const auto& row : DSP_ROWS) {
    provider_.scalars = {{{DSP, row.key}, answers(row.Wire())}};
    DspInfo expected;
    row.fill(expected);
    EXPECT_EQ(Import(), recordOf(expected)) << row.key;
  }
  for (const auto& row : GPU_ROWS) {
    provider_.scalars = {{{GPU, row.key}, answers(row.Wire())}};
    GpuInfo expected(0);
    if (row.key != 13) {  // never asked
      row.fill(expected);
    }
    EXPECT_EQ(Import(), recordOf({}, expected)) << row.key;
  }
  provider_.scalars = {{{GPU, 4}, answers({'n', 0})},
                       {{CPU, 1}, answers(words({0xFFFFFFFFFFFFFFFC}))},
                       {{CPU, 2}, answers(words({0xFFFFFFFFFFFFFFFC}))}};
  GpuInfo gpu(0);
  gpu.name = "n";
  EXPECT_EQ(Import(), recordOf({}, gpu, {.cap1 = -4, .cap2 = 0xFFFFFFFFFFFFFFFC}));
}

TEST_F(SystemInfoImport, TakesTheListsOfTheFirstDsp) {
  provider_.lists[{DSP, 16}] = answers(halfWords({0, 5, 1, 9, 0, 6}));
  provider_.lists[{DSP, 46}] = answers(halfWords({0, 7, 0, 9}));
  provider_.lists[{DSP, 47}] = answers(halfWords({0}) + padded({'a'}, 32));
  provider_.lists[{DSP, 48}] = answers(halfWords({0, 3}) + padded({'b'}, 32));
  DspInfo expected;
  expected.cap16 = {5, 6};
  expected.cap46 = {{0, 7}, {1, 9}};
  expected.cap47 = {"a"};
  expected.cap48 = {{0, {"b", 3}}};
  EXPECT_EQ(Import(), recordOf(expected));
}

TEST_F(SystemInfoImport, ListsShareAScratchBuffer) {
  constexpr std::uint64_t ONE = 1;
  const Reply fails = {FAILURE, 0};
  struct Step {  // of one list key
    std::vector<Reply> script;
    Numbers offered;
    std::size_t entries;
  };
  struct {
    const char* name;
    Step steps[4];  // keys 16, 46, 47, 48
  } const ROWS[] = {
      {"nothing answered: 8 bytes each time",
       {{{fails}, {8}, 0}, {{fails}, {8}, 0}, {{fails}, {8}, 0}, {{fails}, {8}, 0}}},
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
       {{{{SUCCESS, ~ONE}}, {8}, 0},
        {{{TOO_SMALL, LARGEST_ANSWER + 1}}, {8}, 0},
        {{{SUCCESS, ONE << 63}}, {8}, 0},
        {{{TOO_SMALL, ONE << 40}}, {8}, 0}}},
  };
  const std::uint64_t keys[] = {16, 46, 47, 48};
  for (const auto& row : ROWS) {
    SCOPED_TRACE(row.name);
    for (std::size_t i = 0; i < 4; ++i) {
      provider_.lists[{DSP, keys[i]}] = replies(row.steps[i].script);
    }
    const DspInfo dsp = Import().dsps.front();
    const std::size_t entries[] = {dsp.cap16.size(), dsp.cap46.size(), dsp.cap47.size(),
                                   dsp.cap48.size()};
    const std::vector<Asked> asked = provider_.TakeAsked();
    for (std::size_t i = 0; i < 4; ++i) {
      std::vector<Asked> ofKey = asked;
      std::erase_if(ofKey, [&](const Asked& question) {
        return question.key != Key{DSP, keys[i]};
      });
      EXPECT_EQ(each(ofKey, &Asked::offered), row.steps[i].offered) << keys[i];
      EXPECT_EQ(entries[i], row.steps[i].entries) << keys[i];
    }
  }
}

TEST_F(SystemInfoImport, AListThatIsNotTakenBecomesEmpty) {
  for (const Reply& reply : {Reply{FAILURE, 8}, Reply{SUCCESS, 12}, Reply{TOO_SMALL, 8}}) {
    provider_.lists[{DSP, 16}] = replies({reply});
    std::vector<std::uint32_t> list = {50};
    Bytes scratch(8);
    ImportSerializedList(provider_.loader, 16, list, scratch);
    EXPECT_TRUE(list.empty()) << reply.status;
  }
}

}  // namespace
