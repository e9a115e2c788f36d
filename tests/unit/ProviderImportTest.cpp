// The end-to-end tests and those of soc-info leave out keys of an unknown chip.
#include "DynamicSocInfo/import/ProviderImport.h"

#include <gtest/gtest.h>

#include "AnswerProbe.h"
#include "FakeProvider.h"

namespace {

TEST(ProviderImport, FillsTheFirstEntriesAndAlwaysCountsForAKnownChip) {
  FakeProvider provider;
  SocInfo record = recordOf({});
  record.dsps.emplace_back();
  record.gpus.emplace_back(0);
  SocInfo expected = record;
  EXPECT_FALSE(ImportProviderCapabilities(provider.loader, record));
  EXPECT_EQ(record, expected);

  record.socModel = expected.socModel = 1;
  expected.dsps.front().cap1 = expected.gpus.front().cap1 = expected.cpu.cap1 = 3;
  for (const std::uint64_t component : {DSP, GPU, CPU}) {
    provider.scalars[{component, 1}] = answers(words({3}));
  }
  EXPECT_TRUE(ImportProviderCapabilities(provider.loader, record));
  EXPECT_EQ(record, expected);
}

}  // namespace
