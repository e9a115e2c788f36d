// The dynamic library layer and the provider loader over the system's own loader, with real
// libraries.
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/WindowsApi.h"
#include "provider/DynamicLibrary.h"
#include "provider/ProviderLoader.h"

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t LOCAL = DL_NOW | DL_LOCAL;
constexpr std::uint32_t GLOBAL = DL_NOW | DL_GLOBAL;

/// The directory of this program, in which the library's own code lies here.
fs::path programDirectory() {
  std::array<char, 4096> path{};
  GetModuleFileNameA(nullptr, path.data(), path.size());
  return fs::path(path.data()).parent_path();
}

class LibraryLayer : public testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(IsLoaded()); }
  void TearDown() override { EXPECT_FALSE(IsLoaded()) << "a reference was left"; }

  [[nodiscard]] void* Open(std::uint32_t flags) const { return dlOpen(path.c_str(), flags); }
  [[nodiscard]] bool IsLoaded() const { return Open(DL_NOLOAD) != nullptr; }
  /// Whether a lookup in all modules finds what only the fixture has.
  static bool IsVisible() { return dlSym(DL_DEFAULT, "fixtureLength") != nullptr; }

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
      EXPECT_NE(dlSym(module, "fixtureLength"), nullptr);
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
  EXPECT_EQ(dlClose(module), -1);
  EXPECT_STREQ(dlError(), "free library failed");
}

TEST_F(LibraryLayer, LeavesToTheProcessWhatItHadLoaded) {
  const HMODULE held = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  EXPECT_EQ(Open(LOCAL), held);
  EXPECT_TRUE(IsVisible()) << "hidden, though this open did not bring it in";
  EXPECT_EQ(dlClose(held), 0);
  EXPECT_TRUE(IsLoaded());
  EXPECT_TRUE(FreeLibrary(held));
}

TEST_F(LibraryLayer, TakesNoOtherModulesSymbolForTheAskedOnes) {
  void* const module = Open(LOCAL);
  ASSERT_NE(dlSym(DL_DEFAULT, "strlen"), nullptr);
  EXPECT_EQ(dlSym(module, "strlen"), nullptr) << "the fixture needs it but does not have it";
  EXPECT_STREQ(dlError(), "can't resolve symbol");
  EXPECT_EQ(dlSym(DL_DEFAULT, "no such symbol"), nullptr);
  EXPECT_EQ(dlClose(module), 0);
}

TEST_F(LibraryLayer, RefusesWhatIsNoLibrary) {
  const std::string text = (programDirectory() / "no-library.dll").string();
  std::ofstream(text) << "This is text.";
  for (const std::string& name :
       {text, path + ".missing.dll", std::string("no-such-library.dll")}) {
    EXPECT_EQ(dlOpen(name.c_str(), LOCAL), nullptr) << name;
    EXPECT_STREQ(dlError(), "load library failed");
  }
  fs::remove(text);
}

TEST_F(LibraryLayer, TellsTheFileOfAnAddress) {
  void* const module = Open(LOCAL);
  std::string found;
  EXPECT_EQ(dlModulePath(dlSym(module, "fixtureNumber"), found), 1U);
  EXPECT_TRUE(fs::equivalent(found, path)) << found;
  EXPECT_EQ(dlModulePath(reinterpret_cast<const void*>(&dlModulePath), found), 1U);
  EXPECT_EQ(fs::path(found).parent_path(), programDirectory());
  EXPECT_EQ(dlModulePath(found.data(), found), 0U) << "an address in no module";
  EXPECT_EQ(found, "");
  EXPECT_EQ(dlClose(module), 0);
}

class Loader : public LibraryLayer {
 protected:
  void SetUp() override { fs::copy_file(path, provider, fs::copy_options::overwrite_existing); }
  void TearDown() override {
    EXPECT_EQ(dlOpen(provider.string().c_str(), DL_NOLOAD), nullptr);
    EXPECT_TRUE(fs::remove(provider));
  }

  static void ExpectFixture(const ProviderLoader& loader, std::string_view name) {
    ASSERT_NE(loader.handle, nullptr);
    EXPECT_EQ(loader.libraryName, name);
    EXPECT_EQ(reinterpret_cast<void*>(loader.getApiVersion),
              dlSym(loader.handle, "Soc_GetAPIVersion"));
    ASSERT_NE(loader.getCapability, nullptr);
    std::uint64_t size = 7;
    EXPECT_EQ(loader.getCapability(2, 5, nullptr, &size), 25U);
    EXPECT_EQ(loader.getCapabilitySerialized, nullptr) << "the fixture has none";
    EXPECT_FALSE(IsVisible());
  }

  const fs::path provider = programDirectory() / SERVICE_UTILS_LIBRARY;
};

TEST_F(Loader, FindsTheProviderBesideTheLibrary) {
  for (const ProviderSearchPlan plan : {ServiceUtilsOnly, AllProviders}) {
    const ProviderLoader loader(plan);
    ExpectFixture(loader, SERVICE_UTILS_LIBRARY);
    std::string found;
    dlModulePath(reinterpret_cast<const void*>(loader.getCapability), found);
    EXPECT_TRUE(fs::equivalent(found, provider)) << found;
  }
}

TEST_F(Loader, LoadsOneFileOfADirectory) {
  ProviderLoader loader{ProviderSearchPlan{2}};
  EXPECT_FALSE(loader.Load(provider.parent_path().string(), SYSTEM_INFO_LIBRARY));
  EXPECT_EQ(loader.handle, nullptr);
  EXPECT_EQ(loader.libraryName, "");
  EXPECT_TRUE(loader.Load(provider.parent_path().string(), SERVICE_UTILS_LIBRARY));
  ExpectFixture(loader, SERVICE_UTILS_LIBRARY);
}

}  // namespace
