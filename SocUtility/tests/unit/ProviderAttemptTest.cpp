// Which loaders are taken for a provider.
#include "ProviderAttempt.h"

#include <gtest/gtest.h>

namespace {

std::uint32_t version(std::uint8_t*, std::uint8_t*) { return 0; }
std::uint32_t query(std::uint64_t, std::uint64_t, void*, std::uint64_t*) { return 0; }

/// Whether a loader of this name is accepted; a digit 1 stands for each piece that it has: handle,
/// version, query, serialized query.
bool isAccepted(const char* libraryName, const std::string& pieces) {
  int module = 0;
  ProviderLoader loader(ProviderSearchPlan{2});
  loader.libraryName = libraryName;
  loader.handle = pieces[0] == '1' ? &module : nullptr;
  loader.getApiVersion = pieces[1] == '1' ? version : nullptr;
  loader.getCapability = pieces[2] == '1' ? query : nullptr;
  loader.getCapabilitySerialized = pieces[3] == '1' ? query : nullptr;
  const bool accepted = IsAcceptedProvider(loader);
  loader.handle = nullptr;  // it is no module to unload
  return accepted;
}

TEST(ProviderAttempt, AcceptsEitherKindWithAllItsPieces) {
  for (const char* pieces : {"1110", "1111"}) {
    EXPECT_TRUE(isAccepted("RzSoCServiceUtils.dll", pieces)) << pieces;
  }
  EXPECT_TRUE(isAccepted("ZynSystemInfo.dll", "1111"));
  for (const char* pieces : {"0111", "1011", "1101", "0110", "1010", "1100"}) {
    EXPECT_FALSE(isAccepted("RzSoCServiceUtils.dll", pieces)) << pieces;
    EXPECT_FALSE(isAccepted("ZynSystemInfo.dll", pieces)) << pieces;
  }
  EXPECT_FALSE(isAccepted("ZynSystemInfo.dll", "1110"));
  for (const char* name : {"", "rzsocserviceutils.dll", "RzSoCServiceUtils.dll ",
                           "RzSoCServiceUtils", "/lib/ZynSystemInfo.dll"}) {
    EXPECT_FALSE(isAccepted(name, "1111")) << name;
  }
}

}  // namespace
