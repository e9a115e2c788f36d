// Driver location with services and registry values made for the test, which needs the right to
// make them. Each test removes them. On a machine that has such a driver the tests are skipped.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DynamicSocInfo/provider/DriverLocation.h"

namespace {

constexpr const char* ACCELERATOR = "C:\\Windows\\pkg\\tvam";
constexpr const char* DSP = "C:\\Windows\\pkg\\dsp";
constexpr LPCWSTR ACCELERATOR_FILE = L"\\SystemRoot\\pkg\\tvam\\a.sys";
constexpr LPCWSTR DSP_FILE = L"\\SystemRoot\\pkg\\dsp\\b.sys";
const std::string SERVICE_KEY = "SYSTEM\\CurrentControlSet\\Services\\rztvamcdm";
const std::string DEVICE_KEY = "SYSTEM\\CurrentControlSet\\Enum\\ZYNTEST";
const std::string DEVICE = "ZYNTEST\\DEV0\\0";

struct Value {
  DWORD type;
  std::string bytes;
};

class DriverLocation : public testing::Test {
 protected:
  void SetUp() override {
    manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    ASSERT_NE(manager, nullptr) << GetLastError();
    for (const LPCWSTR name : {L"rztvamcdm", L"rzkelbrpc"}) {
      if (const SC_HANDLE service = OpenServiceW(manager, name, SERVICE_QUERY_CONFIG)) {
        CloseServiceHandle(service);
        GTEST_SKIP() << "this machine has the driver";
      }
    }
    SetEnvironmentVariableW(L"windir", L"C:\\Windows");
  }

  void TearDown() override {
    Reset();
    CloseServiceHandle(manager);
  }

  /// Removes what the test has made.
  void Reset() {
    if (!services.empty()) {
      RegDeleteTreeA(HKEY_LOCAL_MACHINE, (SERVICE_KEY + "\\Enum").c_str());
      RegDeleteTreeA(HKEY_LOCAL_MACHINE, DEVICE_KEY.c_str());
    }
    for (const SC_HANDLE service : services) {
      EXPECT_TRUE(DeleteService(service)) << GetLastError();
      EXPECT_TRUE(CloseServiceHandle(service));
    }
    services.clear();
  }

  void Install(LPCWSTR name, LPCWSTR file) {
    services.push_back(CreateServiceW(
        manager, name, name, SERVICE_ALL_ACCESS, SERVICE_KERNEL_DRIVER, SERVICE_DEMAND_START,
        SERVICE_ERROR_IGNORE, file, nullptr, nullptr, nullptr, nullptr, nullptr));
    ASSERT_NE(services.back(), nullptr) << GetLastError();
  }

  static void Store(const std::string& key, LPCSTR name, const Value& value) {
    EXPECT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), name, value.type, value.bytes.data(),
                              static_cast<DWORD>(value.bytes.size())),
              ERROR_SUCCESS);
  }

  /// The accelerator's service with a device that is marked so.
  void InstallAccelerator(const Value& marking, const Value& device) {
    Install(L"rztvamcdm", ACCELERATOR_FILE);
    Store(SERVICE_KEY + "\\Enum", "0", device);
    Store("SYSTEM\\CurrentControlSet\\Enum\\" + DEVICE + "\\Device Parameters\\TVAM\\INFO",
          "LumarixEnabledDSPInfo", marking);
  }

 private:
  SC_HANDLE manager = nullptr;
  std::vector<SC_HANDLE> services;
};

TEST_F(DriverLocation, PrefersTheAcceleratorOnlyWhenMarked) {
  const Value text{REG_SZ, DEVICE + '\0'};
  const struct {
    const char* fault;
    Value marking, device;
    const char* directory = DSP;
  } rows[] = {
      {"none", {REG_BINARY, "\x08"}, text, ACCELERATOR},
      {"device without a terminator", {REG_BINARY, "\x08"}, {REG_SZ, DEVICE}, ACCELERATOR},
      {"no bytes", {REG_BINARY, ""}, text},
      {"a string", {REG_SZ, "\x08"}, text},
      {"a byte of no type", {REG_NONE, "\x08"}, text},
      {"a number", {REG_DWORD, {8, 0, 0, 0}}, text},
      {"device of another type", {REG_BINARY, "\x08"}, {REG_BINARY, DEVICE + '\0'}},
      {"device that is not there", {REG_BINARY, "\x08"}, {REG_SZ, "ZYNTEST\\DEV1\\0"}},
  };
  for (const auto& [fault, marking, device, directory] : rows) {
    InstallAccelerator(marking, device);
    Install(L"rzkelbrpc", DSP_FILE);
    EXPECT_EQ(locateDriverDirectory(), directory) << fault;
    Reset();
  }
}

TEST_F(DriverLocation, IsUtf8AndNeedsTheSystemRoot) {
  EXPECT_EQ(locateDriverDirectory(), "") << "nothing is installed";
  const struct {
    LPCWSTR file;
    const char* directory;
    LPCWSTR windir = L"D:\\W\u00efn";
  } rows[] = {
      {L"\\SystemRoot\\p\u00e4k\u6f22\U0001F600\\x.sys",
       "D:\\W\xC3\xAFn\\p\xC3\xA4k\xE6\xBC\xA2\xF0\x9F\x98\x80"},
      {L"\"\\SystemRoot\\pkg\\x.sys\"", ""},
      {L"\\SystemRoot\\pkg\\x.sys", "", nullptr},
  };
  for (const auto& [file, directory, windir] : rows) {
    Install(L"rzkelbrpc", file);
    SetEnvironmentVariableW(L"windir", windir);
    EXPECT_EQ(serviceBinaryDirectory(L"rzkelbrpc"), directory);
    Reset();
  }
}

}  // namespace
