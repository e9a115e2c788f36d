// Facts of the Linux layer alone: what the dynamic linker's own modules would do to it, and what is
// documented of the Win32 functions but not kept by all versions of them.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/WindowsApi.h"

namespace {

namespace fs = std::filesystem;

std::string pathOf(HMODULE module) {
  std::array<char, 4096> path{};
  return {path.data(), GetModuleFileNameA(module, path.data(), path.size())};
}

TEST(LinuxModule, EveryListedOneCanBeAsked) {
  std::array<HMODULE, 256> modules{};
  DWORD size = 0;
  ASSERT_TRUE(K32EnumProcessModules(GetCurrentProcess(), modules.data(), sizeof modules, &size));
  int definingGetpid = 0;
  for (std::size_t i = 0; i < size / sizeof(HMODULE); ++i) {
    const std::string path = pathOf(modules.at(i));
    EXPECT_TRUE(path.starts_with('/') && fs::exists(path)) << path;
    definingGetpid += GetProcAddress(modules.at(i), "getpid") != nullptr ? 1 : 0;
  }
  EXPECT_EQ(definingGetpid, 1) << "the C library, and no module that merely needs it";
}

TEST(LinuxModule, LoadedFromARelativePathKeepsItsDirectory) {
  const fs::path library = fs::absolute(FIXTURE_LIBRARY);
  const fs::path startDirectory = fs::current_path();
  fs::current_path(library.parent_path());
  const HMODULE module = LoadLibraryExA(("./" + library.filename().string()).c_str(), nullptr,
                                        LOAD_WITH_ALTERED_SEARCH_PATH);
  fs::current_path("/");
  ASSERT_NE(module, nullptr);
  EXPECT_TRUE(fs::equivalent(pathOf(module), library)) << pathOf(module);
  EXPECT_EQ(GetModuleHandleA(library.c_str()), module);
  EXPECT_TRUE(FreeLibrary(module));
  fs::current_path(startDirectory);
}

TEST(LinuxModule, LoadedFromADirectoryThatIsGoneKeepsItsPath) {
  const fs::path startDirectory = fs::current_path();
  const fs::path library = fs::temp_directory_path() / "PlatformTests-moved";
  const fs::path gone = fs::temp_directory_path() / "PlatformTests-gone";
  fs::copy_file(FIXTURE_LIBRARY, library, fs::copy_options::overwrite_existing);
  fs::create_directory(gone);
  fs::current_path(gone);
  fs::remove(gone);
  const HMODULE module = LoadLibraryExA(("../" + library.filename().string()).c_str(), nullptr, 0);
  fs::current_path(startDirectory);
  ASSERT_NE(module, nullptr);
  EXPECT_TRUE(fs::equivalent(pathOf(module), library)) << pathOf(module);
  EXPECT_TRUE(FreeLibrary(module));
  fs::remove(library);
}

TEST(LinuxEnvironmentVariable, BytesThatAreNoUtf8AreReplaced) {
  struct Row {
    const char* bytes;
    std::u16string_view value;
  };
  for (const auto& [bytes, value] :
       {Row{"\x80y", u"\uFFFDy"}, Row{"\xC0\xAF", u"\uFFFD\uFFFD"}, Row{"\xE2\x82", u"\uFFFD"},
        Row{"\xE2\x82x", u"\uFFFDx"}, Row{"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        Row{"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, Row{"\xF5", u"\uFFFD"},
        Row{"\xF4\x8F\xBF\xBF", u"\U0010FFFF"}, Row{"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"}}) {
    setenv("PLATFORM_TEST_BYTES", bytes, 1);
    std::array<WCHAR, 8> buffer{};
    const DWORD length = GetEnvironmentVariableW(u"PLATFORM_TEST_BYTES", buffer.data(), 8);
    EXPECT_TRUE(std::u16string_view(buffer.data(), length) == value) << bytes;
  }
}

}  // namespace
