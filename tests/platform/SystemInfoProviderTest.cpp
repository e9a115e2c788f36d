// A system-info provider, from the search to the record. It is in the test program's own
// directory, which is the library's here.
#include <gtest/gtest.h>

#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

namespace {

TEST(SystemInfoProvider, IsFoundByThePlanOfAllProvidersAndReplacesTheRecord) {
  SocInfo record = BuildChipRecord(0);
  record.dsps.emplace_back();
  record.gpus.front().cap13 = 13;
  {
    ProviderLoader provider(AllProviders);
    ASSERT_EQ(provider.libraryName, "ZynSystemInfo.dll");
    EXPECT_TRUE(ImportProviderCapabilities(provider, record));
  }
  EXPECT_EQ(dlOpen("ZynSystemInfo.dll", DL_NOW | DL_NOLOAD), nullptr) << "it is still loaded";

  ASSERT_EQ(record.dsps.size(), 1U);
  const DspInfo& dsp = record.dsps.front();
  EXPECT_EQ(dsp.cap1, 201);
  EXPECT_EQ(dsp.cap16, (U32List{16, 17}));
  EXPECT_EQ(dsp.cap38, 238);
  EXPECT_EQ(dsp.cap44, 22.0F);
  EXPECT_EQ(dsp.cap45, 245);
  EXPECT_EQ(dsp.cap46, (U32ByPosition{{0, 46}, {1, 47}}));
  EXPECT_EQ(dsp.cap47, NameList{"forty-seven"});
  EXPECT_EQ(dsp.cap48, (NamedValuesByPosition{{0, {.name = "forty-eight", .value = 48}}}));
  ASSERT_EQ(record.gpus.size(), 1U);
  EXPECT_EQ(record.gpus.front().name, "Bittern 3000");
  EXPECT_EQ(record.gpus.front().cap12, 312U);
  EXPECT_EQ(record.gpus.front().cap13, 0U) << "it is not asked, and replaced all the same";
  EXPECT_EQ(record.cpu.cap2, 502U);
}

}  // namespace
