// The import over a record's values: which keys are asked, where answers land, what counts.
#include "import/ProviderImport.h"

#include <gtest/gtest.h>

#include "AnswerProbe.h"
#include "FakeProvider.h"
#include "KeyRows.h"

namespace {

using Numbers = std::vector<std::uint64_t>;

const std::vector<Key> ALL_KEYS = [] {
  std::vector<Key> keys;
  for (const std::uint64_t key : Numbers{1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                                         16, 18, 19, 20, 21, 22, 23, 24, 25, 17, 26, 27, 28, 29, 30,
                                         31, 32, 33, 34, 36, 37, 38, 39, 40, 41, 42, 43, 44}) {
    keys.emplace_back(DSP, key);
  }
  keys.emplace_back(CPU, 1);
  keys.emplace_back(CPU, 2);
  for (const std::uint64_t key : Numbers{1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}) {
    keys.emplace_back(GPU, key);
  }
  return keys;
}();

bool isRequired(Key key) {
  return (key.first == DSP && key.second <= 28) || (key.first == GPU && key.second <= 4);
}

/// Answers every key that is asked with a 3.
void answerAll(FakeProvider& provider) {
  for (const Key& key : ALL_KEYS) {
    const bool isFloat = key.first == DSP && key.second >= 43;
    provider.scalars[key] = answers(isFloat ? packed<float>({3.0F}) : words({3}));
  }
  provider.scalars[{DSP, 16}] = answers(words({1, 3}));
  provider.scalars[{GPU, 4}] = answers({'3', 0});
}

/// A record whose values any answer would change, with a second entry of each kind.
SocInfo recordBefore(std::uint32_t socModel = 0) {
  DspInfo dsp = zeroDsp();
  dsp.cap16 = {8, 9};
  SocInfo record = recordOf(dsp);
  record.socModel = socModel;
  record.dsps.push_back(dsp);
  record.gpus.emplace_back(0);
  return record;
}

TEST(ProviderImport, AsksEachKeyOnceInOrderAndWithItsSize) {
  FakeProvider provider;
  SocInfo record = recordBefore();
  EXPECT_FALSE(ImportProviderCapabilities(provider.loader, record));
  EXPECT_EQ(record, recordBefore()) << "nothing was answered";

  const std::vector<Asked> asked = provider.TakeAsked();
  EXPECT_EQ(each(asked, &Asked::key), ALL_KEYS);
  for (const Asked& question : asked) {
    const Key& key = question.key;
    const bool isVariable = key == Key{DSP, 16} || key == Key{GPU, 4};
    const bool isFloat = key.first == DSP && key.second >= 43;
    EXPECT_EQ(question.offered, isVariable ? 32U : isFloat ? 4U : 8U) << key.second;
  }
  SocInfo known = recordBefore(1);
  EXPECT_TRUE(ImportProviderCapabilities(provider.loader, known)) << "a known chip needs no key";
}

TEST(ProviderImport, WritesTheFirstEntriesAndTheCpu) {
  FakeProvider provider;
  answerAll(provider);
  provider.scalars[{CPU, 1}] = answers(words({0xFFFFFFFF00000007}));
  provider.scalars[{CPU, 2}] = answers(words({0xFFFFFFFF00000007}));
  SocInfo record = recordBefore();
  EXPECT_TRUE(ImportProviderCapabilities(provider.loader, record));
  EXPECT_EQ(record.cpu, (CpuInfo{.cap1 = 7, .cap2 = 0xFFFFFFFF00000007}));
  EXPECT_EQ(record.gpus.front().name, "3");
  EXPECT_EQ(record.dsps.front().cap16, std::vector<std::uint32_t>{3});
  EXPECT_EQ(record.dsps.back(), recordBefore().dsps.back());
  EXPECT_EQ(record.gpus.back(), recordBefore().gpus.back());
}

TEST(ProviderImport, EachMissingKeyCountsAsItsGroupSays) {
  for (const Key& missing : ALL_KEYS) {
    SCOPED_TRACE(testing::PrintToString(missing));
    FakeProvider provider;
    answerAll(provider);
    provider.scalars.erase(missing);
    const auto statusOf = [&](std::uint64_t component) {
      return missing.first != component ? IMPORTED_ALL
             : isRequired(missing)      ? MISSING_REQUIRED
                                        : MISSING_OPTIONAL;
    };
    SocInfo record = recordBefore();
    EXPECT_EQ(ImportDspInPlace(provider.loader, record.dsps.front()), statusOf(DSP));
    EXPECT_EQ(ImportGpuInPlace(provider.loader, record.gpus.front()), statusOf(GPU));
    EXPECT_EQ(ImportProviderCapabilities(provider.loader, record), !isRequired(missing));

    SocInfo known = recordBefore(1);
    EXPECT_TRUE(ImportProviderCapabilities(provider.loader, known));
    known.socModel = 0;
    EXPECT_EQ(known, record) << "what was imported stays, whatever the result";
  }
}

TEST(ProviderImport, StatusIsTheWorstOfAllKeys) {
  FakeProvider provider;
  DspInfo dsp;
  EXPECT_EQ(ImportDspInPlace(provider.loader, dsp), MISSING_REQUIRED);
  answerAll(provider);
  std::erase_if(provider.scalars, [](const auto& entry) { return !isRequired(entry.first); });
  SocInfo record = recordBefore();
  EXPECT_TRUE(ImportProviderCapabilities(provider.loader, record));
  EXPECT_EQ(ImportDspInPlace(provider.loader, record.dsps.front()), MISSING_OPTIONAL);
  EXPECT_EQ(ImportGpuInPlace(provider.loader, record.gpus.front()), MISSING_OPTIONAL);
}

}  // namespace
