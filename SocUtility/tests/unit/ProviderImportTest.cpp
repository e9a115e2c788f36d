// The import over a record's values: which keys are asked and what counts.
#include "import/ProviderImport.h"

#include <gtest/gtest.h>

#include "AnswerProbe.h"
#include "FakeProvider.h"

namespace {

/// In the order in which they are asked.
const std::vector<Key> ALL_KEYS = [] {
  constexpr std::uint64_t DSP_KEYS[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                                        16, 18, 19, 20, 21, 22, 23, 24, 25, 17, 26, 27, 28, 29, 30,
                                        31, 32, 33, 34, 36, 37, 38, 39, 40, 41, 42, 43, 44};
  std::vector<Key> keys;
  for (const std::uint64_t key : DSP_KEYS) {
    keys.emplace_back(DSP, key);
  }
  keys.insert(keys.end(), {{CPU, 1}, {CPU, 2}, {GPU, 1}});
  for (std::uint64_t key = 4; key <= 13; ++key) {
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

/// A record with a second entry of each kind.
SocInfo recordBefore(std::uint32_t socModel = 0) {
  SocInfo record = recordOf({});
  record.socModel = socModel;
  record.dsps.front().cap16 = {8, 9};
  record.dsps.emplace_back();
  record.gpus.emplace_back(0);
  return record;
}

TEST(ProviderImport, AsksEachKeyOnceInOrder) {
  FakeProvider provider;
  SocInfo record = recordBefore();
  EXPECT_FALSE(ImportProviderCapabilities(provider.loader, record));
  EXPECT_EQ(record, recordBefore()) << "nothing was answered";
  EXPECT_EQ(provider.asked, ALL_KEYS);

  SocInfo known = recordBefore(1);
  EXPECT_TRUE(ImportProviderCapabilities(provider.loader, known)) << "a known chip needs no key";
  EXPECT_EQ(ImportDspInPlace(provider.loader, record.dsps.front()), MISSING_REQUIRED)
      << "the optional keys that are missing too make it no better";
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
    EXPECT_EQ(record.dsps.back(), DspInfo{});
    EXPECT_EQ(record.gpus.back(), GpuInfo(0));
  }
}

}  // namespace
