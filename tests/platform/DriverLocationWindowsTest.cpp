// Driver location with services and registry values made for the test, which needs the right to
// make them. The test removes them. On a machine that has such a driver it is skipped. The
// tests over the mocked platform try what can go wrong.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DynamicSocInfo/provider/DriverLocation.h"

namespace {

const std::string SERVICE_KEY = "SYSTEM\\CurrentControlSet\\Services\\rztvamcdm";
const std::string DEVICES_KEY = "SYSTEM\\CurrentControlSet\\Enum\\ZYNTEST";
const std::string INFO_KEY = DEVICES_KEY + "\\DEV0\\0\\Device Parameters\\TVAM\\INFO";

class DriverLocation : public testing::Test {
 protected:
  void SetUp() override {
    manager_ = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    ASSERT_NE(manager_, nullptr) << GetLastError();
    for (const LPCWSTR name : {L"rztvamcdm", L"rzkelbrpc"}) {
      if (const SC_HANDLE service = OpenServiceW(manager_, name, SERVICE_QUERY_CONFIG)) {
        CloseServiceHandle(service);
        GTEST_SKIP() << "this machine has the driver";
      }
    }
    SetEnvironmentVariableW(L"windir", L"D:\\W\u00efn");
  }

  void TearDown() override {
    if (!services_.empty()) {
      RegDeleteTreeA(HKEY_LOCAL_MACHINE, (SERVICE_KEY + "\\Enum").c_str());
      RegDeleteTreeA(HKEY_LOCAL_MACHINE, DEVICES_KEY.c_str());
    }
    for (const SC_HANDLE service : services_) {
      EXPECT_TRUE(DeleteService(service)) << GetLastError();
      EXPECT_TRUE(CloseServiceHandle(service));
    }
    CloseServiceHandle(manager_);
  }

  void Install(LPCWSTR name, LPCWSTR file) {
    services_.push_back(CreateServiceW(
        manager_, name, name, SERVICE_ALL_ACCESS, SERVICE_KERNEL_DRIVER, SERVICE_DEMAND_START,
        SERVICE_ERROR_IGNORE, file, nullptr, nullptr, nullptr, nullptr, nullptr));
    ASSERT_NE(services_.back(), nullptr) << GetLastError();
  }

  static void Store(const std::string& key, LPCSTR name, DWORD type, const std::string& bytes) {
    EXPECT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), name, type, bytes.data(),
                              static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
  }

 private:
  SC_HANDLE manager_ = nullptr;
  std::vector<SC_HANDLE> services_;
};

TEST_F(DriverLocation, PrefersTheAcceleratorOnlyWhenMarked) {
  EXPECT_EQ(locateDriverDirectory(), "") << "nothing is installed";
  Install(L"rzkelbrpc", L"\\SystemRoot\\p\u00e4k\u6f22\U0001F600\\x.sys");
  Install(L"rztvamcdm", L"\\SystemRoot\\tvam\\a.sys");
  Store(SERVICE_KEY + "\\Enum", "0", REG_SZ, "ZYNTEST\\DEV0\\0");  // without a terminator
  const struct {
    DWORD type;
    std::string marking;
    bool isMarked = false;
  } rows[] = {
      {REG_BINARY, "\x08", true}, {REG_BINARY, ""}, {REG_SZ, "\x08"}, {REG_DWORD, {8, 0, 0, 0}}};
  for (const auto& [type, marking, isMarked] : rows) {
    Store(INFO_KEY, "LumarixEnabledDSPInfo", type, marking);
    EXPECT_EQ(locateDriverDirectory(),
              isMarked ? "D:\\W\xC3\xAFn\\tvam"
                       : "D:\\W\xC3\xAFn\\p\xC3\xA4k\xE6\xBC\xA2\xF0\x9F\x98\x80")
        << type;
  }
}

}  // namespace
