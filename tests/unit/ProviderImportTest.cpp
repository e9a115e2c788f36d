// What missing keys mean to the import over a record's values.
#include "DynamicSocInfo/import/ProviderImport.h"

#include <gtest/gtest.h>

#include "AnswerProbe.h"
#include "FakeProvider.h"

namespace {

void answerKeys(FakeProvider& provider, std::uint32_t component,
                std::span<const std::uint8_t> keys) {
  for (const std::uint64_t key : keys) {
    const bool isFloat = key == 43 || key == 44;
    provider.scalars[{component, key}] = answers(isFloat ? packed<float>({3.0F}) : words({3}));
  }
  provider.scalars[{DSP, 16}] = answers(words({1, 3}));
  provider.scalars[{GPU, 4}] = answers({'3', 0});
}

// The end-to-end tests leave out each required key by itself.
TEST(ProviderImport, StatusIsTheWorstOfAllKeysOfTheFirstEntry) {
  FakeProvider provider;
  SocInfo record = recordOf({});
  record.dsps.emplace_back();
  record.gpus.emplace_back(0);
  const auto expectStatus = [&](ImportStatus status, bool isImported) {
    EXPECT_EQ(ImportDspInPlace(provider.loader, record.dsps.front()), status);
    EXPECT_EQ(ImportGpuInPlace(provider.loader, record.gpus.front()), status);
    EXPECT_EQ(ImportProviderCapabilities(provider.loader, record), isImported);
  };
  expectStatus(MISSING_REQUIRED, false);
  EXPECT_EQ(record.dsps.front(), DspInfo{}) << "nothing was answered";
  record.socModel = 1;
  expectStatus(MISSING_REQUIRED, true);
  record.socModel = 0;
  answerKeys(provider, DSP, DSP_IMPORT_KEYS.required);
  answerKeys(provider, GPU, GPU_IMPORT_KEYS.required);
  expectStatus(MISSING_OPTIONAL, true);
  answerKeys(provider, DSP, DSP_IMPORT_KEYS.optional);
  answerKeys(provider, GPU, GPU_IMPORT_KEYS.optional);
  expectStatus(IMPORTED_ALL, true);
  EXPECT_EQ(record.dsps.back(), DspInfo{});
  EXPECT_EQ(record.gpus.back(), GpuInfo(0));
}

}  // namespace
