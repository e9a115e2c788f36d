// What a missing key means to the import over a record's values.
#include "import/ProviderImport.h"

#include <gtest/gtest.h>

#include "AnswerProbe.h"
#include "FakeProvider.h"

namespace {

/// Answers every key of every group.
void answerAll(FakeProvider& provider) {
  for (std::uint64_t key = 1; key <= 45; ++key) {
    const bool isFloat = key == 43 || key == 44;
    provider.scalars[{DSP, key}] = answers(isFloat ? packed<float>({3.0F}) : words({3}));
    provider.scalars[{GPU, key}] = provider.scalars[{CPU, key}] = answers(words({3}));
  }
  provider.scalars[{DSP, 16}] = answers(words({1, 3}));
  provider.scalars[{GPU, 4}] = answers({'3', 0});
}

TEST(ProviderImport, EachMissingKeyCountsAsItsGroupSays) {
  struct {
    std::uint32_t component;
    std::span<const std::uint8_t> keys;
    ImportStatus dspStatus, gpuStatus;
    bool imported;
  } const ROWS[] = {
      {DSP, DSP_IMPORT_KEYS.required, MISSING_REQUIRED, IMPORTED_ALL, false},
      {DSP, DSP_IMPORT_KEYS.optional, MISSING_OPTIONAL, IMPORTED_ALL, true},
      {GPU, GPU_IMPORT_KEYS.required, IMPORTED_ALL, MISSING_REQUIRED, false},
      {GPU, GPU_IMPORT_KEYS.optional, IMPORTED_ALL, MISSING_OPTIONAL, true},
      {CPU, CPU_IMPORT_KEYS.optional, IMPORTED_ALL, IMPORTED_ALL, true},
  };
  for (const auto& row : ROWS) {
    for (const std::uint8_t key : row.keys) {
      SCOPED_TRACE(testing::Message() << row.component << " " << int{key});
      FakeProvider provider;
      answerAll(provider);
      provider.scalars.erase({row.component, key});
      SocInfo record = recordOf({});
      record.dsps.emplace_back();
      record.gpus.emplace_back(0);
      EXPECT_EQ(ImportDspInPlace(provider.loader, record.dsps.front()), row.dspStatus);
      EXPECT_EQ(ImportGpuInPlace(provider.loader, record.gpus.front()), row.gpuStatus);
      EXPECT_EQ(ImportProviderCapabilities(provider.loader, record), row.imported);
      EXPECT_EQ(record.dsps.back(), DspInfo{});
      EXPECT_EQ(record.gpus.back(), GpuInfo(0));
      record.socModel = 1;
      EXPECT_TRUE(ImportProviderCapabilities(provider.loader, record)) << "of a known chip";
    }
  }
}

TEST(ProviderImport, StatusIsTheWorstOfAllKeys) {
  FakeProvider provider;
  SocInfo record = recordOf({});
  EXPECT_EQ(ImportDspInPlace(provider.loader, record.dsps.front()), MISSING_REQUIRED);
  EXPECT_FALSE(ImportProviderCapabilities(provider.loader, record));
  EXPECT_EQ(record, recordOf({})) << "nothing was answered";
}

}  // namespace
