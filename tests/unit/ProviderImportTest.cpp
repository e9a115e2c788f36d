// What missing keys mean to the import over a record's values.
#include "DynamicSocInfo/import/ProviderImport.h"

#include <gtest/gtest.h>

#include "AnswerProbe.h"
#include "FakeProvider.h"

namespace {

/// Lets the provider answer the given keys with values that no field has by default.
void answerKeys(FakeProvider& provider, const std::vector<AskedKey>& keys, bool required) {
  for (const auto& [component, key, isRequired, answered, failure] : keys) {
    if (isRequired == required) {
      const bool isTrueByDefault = component == DSP && key == 6;
      provider.scalars[{component, key}] = answers(words({isTrueByDefault ? 0U : 3U}));
    }
  }
  if (required) {
    provider.scalars[{DSP, 16}] = answers(words({1, 3}));
    provider.scalars[{GPU, 4}] = answers({'3', 0});
  } else {
    provider.scalars[{DSP, 43}] = provider.scalars[{DSP, 44}] = answers(packed<float>({3.0F}));
  }
}

// The end-to-end tests leave out each required key by itself.
TEST(ProviderImport, StatusIsTheWorstOfAllKeysOfTheFirstEntry) {
  FakeProvider provider;
  SocInfo record = recordOf({});
  record.dsps.emplace_back();
  record.gpus.emplace_back(0);
  std::vector<AskedKey> keys;
  const auto expectStatus = [&](ImportStatus status, bool isImported) {
    EXPECT_EQ(ImportDspInPlace(provider.loader, record.dsps.front()), status);
    EXPECT_EQ(ImportGpuInPlace(provider.loader, record.gpus.front()), status);
    keys.clear();
    provider.asked.clear();
    EXPECT_EQ(ImportProviderCapabilities(provider.loader, record,
                                         [&](const AskedKey& key) { keys.push_back(key); }),
              isImported);
    EXPECT_TRUE(std::ranges::equal(keys, provider.asked, [](const AskedKey& key, const Key& asked) {
      return Key(key.component, key.key) == asked;
    }));
  };
  expectStatus(MISSING_REQUIRED, false);
  EXPECT_EQ(keys.size(), 56U);
  for (const AskedKey& key : keys) {
    EXPECT_FALSE(key.answered);
    EXPECT_EQ(key.failure, "GetCapability failed");
  }
  record.socModel = 1;
  expectStatus(MISSING_REQUIRED, true);
  record.socModel = 0;
  answerKeys(provider, keys, true);
  expectStatus(MISSING_OPTIONAL, true);
  answerKeys(provider, keys, false);
  expectStatus(IMPORTED_ALL, true);
  for (const AskedKey& key : keys) {
    EXPECT_TRUE(key.answered && key.failure.empty());
  }
  EXPECT_EQ(record.dsps.back(), DspInfo{});
  EXPECT_EQ(record.gpus.back(), GpuInfo(0));

  const SocInfo imported = record;
  provider.scalars.clear();
  expectStatus(MISSING_REQUIRED, false);
  EXPECT_EQ(record, imported) << "a key without an answer keeps its value";
}

}  // namespace
