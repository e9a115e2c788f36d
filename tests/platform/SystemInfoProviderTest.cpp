// A system-info provider, from the search to the record. It is in the test program's own
// directory, which is the library's here. It answers as provider.txt says, or else as the example.
#include <gtest/gtest.h>

#include <utility>

#include "DynamicSocInfo/ProviderAttempt.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"

namespace {

TEST(SystemInfoProvider, IsFoundByThePlanOfAllProvidersAndReplacesTheRecord) {
  SocInfo record = BuildChipRecord(0);
  record.dsps.emplace_back();
  record.gpus.front().cap13 = 50;
  {
    ProviderLoader provider(AllProviders);
    EXPECT_TRUE(ImportProviderCapabilities(provider, record));
  }
  EXPECT_EQ(dlOpen("ZynSystemInfo.dll", DL_NOW | DL_NOLOAD), nullptr) << "it is still loaded";

  ASSERT_EQ(record.dsps.size(), 1U);
  const DspInfo& dsp = record.dsps.front();
  EXPECT_EQ(dsp.cap1, 3);
  EXPECT_EQ(dsp.cap16, (U32List{16, 17}));
  EXPECT_EQ(dsp.cap38, 9);
  EXPECT_EQ(dsp.cap44, 0.25F);
  EXPECT_EQ(dsp.cap45, 245);
  EXPECT_EQ(dsp.cap46, (U32ByPosition{{0, 46}, {1, 47}}));
  EXPECT_EQ(dsp.cap47, NameList{"forty-seven"});
  EXPECT_EQ(dsp.cap48, (NamedValuesByPosition{{0, {.name = "forty-eight", .value = 48}}}));
  EXPECT_EQ(record.gpus.front().name, "Turnstone 860");
  EXPECT_EQ(record.gpus.front().cap12, 32768U);
  EXPECT_EQ(record.gpus.front().cap13, 0U) << "it is not asked, and replaced all the same";
  EXPECT_EQ(record.cpu.cap2, 0x400000000U);
}

// As the other kind it answers every key but 16, a required one.
TEST(ProviderImport, FillsTheFirstEntriesAndAlwaysCountsForAKnownChip) {
  ProviderLoader provider(AllProviders);
  provider.getCapabilitySerialized = nullptr;
  for (const std::uint32_t model : {0U, 1U}) {
    SocInfo record = BuildChipRecord(0);
    record.socModel = model;
    record.dsps.front().cap16 = {50};
    record.dsps.emplace_back();
    EXPECT_EQ(ImportProviderCapabilities(provider, record), model != 0);
    EXPECT_EQ(record.dsps.front().cap1, 3);
    EXPECT_EQ(record.dsps.front().cap16, U32List{50}) << "no answer takes the value away";
    EXPECT_EQ(record.dsps.back(), DspInfo());
  }
}

TEST(ProviderAttempt, AcceptsEitherKindWithAllItsPieces) {
  ProviderLoader provider(AllProviders);
  const auto isAcceptedWithout = [&](auto& piece) {
    const auto kept = std::exchange(piece, {});
    const bool accepted = IsAcceptedProvider(provider);
    piece = kept;
    return accepted;
  };
  for (const std::string_view name : {SYSTEM_INFO_LIBRARY, SERVICE_UTILS_LIBRARY}) {
    SCOPED_TRACE(name);
    provider.libraryName = name;
    EXPECT_TRUE(IsAcceptedProvider(provider));
    EXPECT_FALSE(isAcceptedWithout(provider.libraryName));
    EXPECT_FALSE(isAcceptedWithout(provider.handle));
    EXPECT_FALSE(isAcceptedWithout(provider.getApiVersion));
    EXPECT_FALSE(isAcceptedWithout(provider.getCapability));
    EXPECT_EQ(isAcceptedWithout(provider.getCapabilitySerialized), name == SERVICE_UTILS_LIBRARY);
  }
}

}  // namespace
