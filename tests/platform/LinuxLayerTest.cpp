// The functions that stand in for Windows' on Linux: what the queries of this machine do not show.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "DynamicSocInfo/chip/AcpiTables.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "platform/WindowsApi.h"

namespace {

TEST(FirmwareTable, IsDeniedToAUserWithoutTheRight) {
  if (access("/sys/firmware/acpi/tables/FACP", F_OK) != 0) {
    GTEST_SKIP() << "this machine has no such table";
  }
  constexpr uid_t NOBODY = 65534;
  const uid_t user = geteuid();
  const bool isRoot = user == 0;
  ASSERT_TRUE(!isRoot || seteuid(NOBODY) == 0);
  std::vector<BYTE> buffer(0x10000);
  const UINT size =
      GetSystemFirmwareTable(0, FADT_ID, buffer.data(), static_cast<DWORD>(buffer.size()));
  const DWORD error = GetLastError();
  ASSERT_TRUE(!isRoot || seteuid(user) == 0);
  EXPECT_EQ(size, 0U);
  EXPECT_EQ(error, ERROR_ACCESS_DENIED);
}

/// The provider beside this program, loaded by a path relative to its folder.
class LinuxModules : public testing::Test {
 protected:
  LinuxModules() : folder_(OwnDirectory()) {
    EXPECT_EQ(chdir(folder_.c_str()), 0);
    module_ = LoadLibraryExA("./ZynSystemInfo.dll", nullptr, 0);
    EXPECT_EQ(chdir("/"), 0);
  }
  ~LinuxModules() override { EXPECT_TRUE(FreeLibrary(module_)); }

  /// The process's modules, read into a list with space for `capacity` of them.
  static std::vector<HMODULE> List(std::size_t capacity) {
    std::vector<HMODULE> list(capacity + 1);
    DWORD size = 7;  // must not matter
    EXPECT_TRUE(K32EnumProcessModules(GetCurrentProcess(), list.data(),
                                      static_cast<DWORD>(capacity * sizeof(HMODULE)), &size));
    EXPECT_EQ(list.back(), nullptr) << "written past the end";
    list.resize(size / sizeof(HMODULE));
    return list;
  }

  std::string folder_;
  HMODULE module_;
};

TEST_F(LinuxModules, AreListedOnceInTheirOrder) {
  std::vector<HMODULE> modules = List(1000);
  EXPECT_EQ(modules.back(), module_);
  modules.back() = nullptr;
  EXPECT_EQ(List(modules.size() - 1), modules) << "the last one does not fit";
}

TEST_F(LinuxModules, HaveAnAbsolutePathThatIsCutToItsBuffer) {
  const std::string path = folder_ + "ZynSystemInfo.dll";
  char buffer[1024];
  EXPECT_EQ(GetModuleFileNameA(module_, buffer, sizeof buffer), path.size());
  EXPECT_EQ(buffer, path);
  SetLastError(ERROR_SUCCESS);
  const auto size = static_cast<DWORD>(path.size());
  EXPECT_EQ(GetModuleFileNameA(module_, buffer, size), size);
  EXPECT_EQ(buffer, path.substr(0, size - 1));
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
}

}  // namespace
