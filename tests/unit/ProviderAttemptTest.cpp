// Which loaders are taken for a provider.
#include "DynamicSocInfo/ProviderAttempt.h"

#include <gtest/gtest.h>

namespace {

std::uint32_t version(std::uint8_t*, std::uint8_t*) { return 0; }
std::uint32_t query(std::uint64_t, std::uint64_t, void*, std::uint64_t*) { return 0; }

TEST(ProviderAttempt, AcceptsEitherKindWithAllItsPieces) {
  for (const std::string name : {"RzSoCServiceUtils.dll", "ZynSystemInfo.dll", "",
                                 "rzsocserviceutils.dll", "/lib/ZynSystemInfo.dll"}) {
    for (unsigned pieces = 0; pieces < 16; ++pieces) {
      int module = 0;
      ProviderLoader loader;
      loader.libraryName = name;
      loader.handle = (pieces & 1) != 0 ? &module : nullptr;
      loader.getApiVersion = (pieces & 2) != 0 ? version : nullptr;
      loader.getCapability = (pieces & 4) != 0 ? query : nullptr;
      loader.getCapabilitySerialized = (pieces & 8) != 0 ? query : nullptr;
      const bool expected = (name == "RzSoCServiceUtils.dll" && (pieces & 7) == 7) ||
                            (name == "ZynSystemInfo.dll" && pieces == 15);
      EXPECT_EQ(IsAcceptedProvider(loader), expected) << name << " " << pieces;
      loader.handle = nullptr;  // it is no module to unload
    }
  }
}

}  // namespace
