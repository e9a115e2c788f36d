// The dynamic library layer over the system's own loader, with a real library.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "platform/WindowsApi.h"

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t LOCAL = DL_NOW | DL_LOCAL;
constexpr std::uint32_t GLOBAL = DL_NOW | DL_GLOBAL;

class LibraryLayer : public testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(IsLoaded()); }
  void TearDown() override { EXPECT_FALSE(IsLoaded()) << "a reference was left"; }

  [[nodiscard]] void* Open(std::uint32_t flags) const { return dlOpen(path.c_str(), flags); }
  [[nodiscard]] bool IsLoaded() const { return Open(DL_NOLOAD) != nullptr; }
  /// Whether a lookup in all modules finds what only the fixture has.
  static bool IsVisible() { return dlSym(DL_DEFAULT, "fixtureNumber") != nullptr; }

  const std::string path = fs::absolute(FIXTURE_LIBRARY).string();
};

TEST_F(LibraryLayer, HidesWhatItBroughtInUntilItIsMadeGlobal) {
  struct Step {
    std::uint32_t flags;
    bool visible;
  };
  const std::vector<Step> rows[] = {
      {{DL_NOW, true}, {LOCAL, true}},
      {{LOCAL, false}, {DL_NOW, false}, {LOCAL, false}, {GLOBAL, true}, {LOCAL, true}},
      {{LOCAL | DL_GLOBAL, true}},
      {{LOCAL, false}},
  };
  for (const auto& steps : rows) {
    void* module = nullptr;
    for (const Step& step : steps) {
      module = Open(step.flags);
      ASSERT_NE(module, nullptr) << dlError();
      EXPECT_EQ(IsVisible(), step.visible) << step.flags;
      EXPECT_NE(dlSym(module, "fixtureNumber"), nullptr);
    }
    for (std::size_t left = steps.size(); left > 0; --left) {
      EXPECT_TRUE(IsLoaded()) << left;
      EXPECT_EQ(dlClose(module), 0);
    }
    EXPECT_FALSE(IsLoaded());
  }
}

TEST_F(LibraryLayer, FindsLoadedModulesWithoutAReference) {
  EXPECT_EQ(Open(DL_NOW | DL_NOLOAD), nullptr);
  void* const module = Open(LOCAL);
  for (const std::uint32_t flags : {DL_NOLOAD, DL_NOW | DL_NOLOAD | DL_GLOBAL}) {
    EXPECT_EQ(Open(flags), module) << flags;
    EXPECT_FALSE(IsVisible()) << flags;
  }
  EXPECT_EQ(dlClose(module), 0);
  EXPECT_FALSE(IsLoaded());
}

}  // namespace
