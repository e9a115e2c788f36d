// What the library relies on in the Win32 loader functions. All of it holds for the real functions
// too, so this file runs on every platform.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/WindowsApi.h"

namespace {

namespace fs = std::filesystem;

constexpr DWORD UNCHANGED = GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
constexpr DWORD FROM_ADDRESS = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;

class Module : public testing::Test {
 protected:
  static HMODULE Load(const std::string& name) {
    return LoadLibraryExA(name.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  }

  static std::vector<HMODULE> List() {
    DWORD size = 0;
    EXPECT_TRUE(K32EnumProcessModules(GetCurrentProcess(), nullptr, 0, &size));
    std::vector<HMODULE> modules(size / sizeof(HMODULE));
    EXPECT_TRUE(K32EnumProcessModules(GetCurrentProcess(), modules.data(), size, &size));
    EXPECT_EQ(size, modules.size() * sizeof(HMODULE));
    return modules;
  }

  const std::string path = fs::absolute(FIXTURE_LIBRARY).string();
  const std::string fileName = fs::path(FIXTURE_LIBRARY).filename().string();
};

class LoadedModule : public Module {
 protected:
  void SetUp() override { ASSERT_NE(module, nullptr) << path; }
  void TearDown() override {
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetModuleHandleA(path.c_str()), nullptr) << "a reference was left";
  }

  const HMODULE module = Load(path);
};

TEST_F(Module, GoesWithItsLastReference) {
  ASSERT_EQ(GetModuleHandleA(fileName.c_str()), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
  const HMODULE module = Load(path);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(Load(fileName), module) << "a file name means the loaded module";
  HMODULE byName = nullptr;
  EXPECT_TRUE(GetModuleHandleExA(0, fileName.c_str(), &byName));
  EXPECT_EQ(byName, module);
  HMODULE byAddress = nullptr;
  const auto* const address = reinterpret_cast<LPCSTR>(GetProcAddress(module, "fixtureNumber"));
  EXPECT_TRUE(GetModuleHandleExA(FROM_ADDRESS, address, &byAddress));
  EXPECT_EQ(byAddress, module);

  for (int references = 4; references > 0; --references) {
    EXPECT_EQ(GetModuleHandleA(path.c_str()), module) << references;
    EXPECT_EQ(GetModuleHandleA(fileName.c_str()), module) << references;
    EXPECT_TRUE(GetModuleHandleExA(UNCHANGED, fileName.c_str(), &byName)) << references;
    EXPECT_TRUE(GetModuleHandleExA(UNCHANGED | FROM_ADDRESS, address, &byAddress)) << references;
    EXPECT_TRUE(FreeLibrary(module)) << references;
  }
  EXPECT_EQ(GetModuleHandleA(path.c_str()), nullptr);
  EXPECT_FALSE(GetModuleHandleExA(UNCHANGED | FROM_ADDRESS, address, &byAddress));
  EXPECT_EQ(byAddress, nullptr);
  EXPECT_FALSE(FreeLibrary(module));
}

TEST_F(Module, HandleThatIsNoneIsRefused) {
  alignas(16) static std::array<char, 256> noModule{};
  auto* const handle = reinterpret_cast<HMODULE>(noModule.data());
  std::array<char, MAX_PATH> buffer{};
  EXPECT_FALSE(FreeLibrary(handle));
  EXPECT_FALSE(FreeLibrary(nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_EQ(GetProcAddress(handle, "strlen"), nullptr);
  EXPECT_EQ(GetModuleFileNameA(handle, buffer.data(), MAX_PATH), 0U);
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST_F(Module, ListIsCutToWholeHandles) {
  const std::vector<HMODULE> all = List();
  constexpr DWORD HANDLE_SIZE = sizeof(HMODULE);
  for (const DWORD size : {DWORD{0}, HANDLE_SIZE - 1, HANDLE_SIZE, 2 * HANDLE_SIZE - 1}) {
    std::array<HMODULE, 2> part{};
    DWORD needed = 0;
    EXPECT_TRUE(K32EnumProcessModules(GetCurrentProcess(), part.data(), size, &needed)) << size;
    EXPECT_EQ(needed, all.size() * HANDLE_SIZE) << size;
    EXPECT_EQ(part[0], size < HANDLE_SIZE ? nullptr : all[0]) << size;
    EXPECT_EQ(part[1], nullptr) << size;
  }
  DWORD needed = 0;
  EXPECT_FALSE(K32EnumProcessModules(nullptr, nullptr, 0, &needed));
  EXPECT_FALSE(K32EnumProcessModules(GetCurrentProcess(), nullptr, 0, nullptr));
}

TEST_F(LoadedModule, PathIsCutToTheBuffer) {
  for (const HMODULE asked : {module, HMODULE{nullptr}}) {
    std::array<char, 4096> whole{};
    const DWORD length = GetModuleFileNameA(asked, whole.data(), whole.size());
    ASSERT_EQ(length, std::strlen(whole.data()));
    EXPECT_TRUE(fs::path(whole.data()).is_absolute()) << whole.data();
    EXPECT_EQ(fs::path(whole.data()).filename() == fileName, asked == module) << whole.data();
    EXPECT_TRUE(fs::exists(whole.data())) << whole.data();

    for (const DWORD size : {length, length - 1, DWORD{5}, DWORD{1}, DWORD{0}}) {
      std::string cut(length + 1, '#');
      SetLastError(ERROR_SUCCESS);
      EXPECT_EQ(GetModuleFileNameA(asked, cut.data(), size), size);
      EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER) << size;
      // Whether a terminator takes the last place differs between versions of the real function.
      const DWORD kept = size == 0 ? 0 : size - 1;
      EXPECT_EQ(cut.substr(0, kept), std::string(whole.data(), kept));
      EXPECT_EQ(cut.substr(size), std::string(length + 1 - size, '#')) << size;
    }
    std::string fitting(length + 1, '#');
    EXPECT_EQ(GetModuleFileNameA(asked, fitting.data(), length + 1), length);
    EXPECT_EQ(fitting, std::string(whole.data(), length + 1));
  }
}

}  // namespace
