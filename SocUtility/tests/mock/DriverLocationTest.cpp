#include "provider/DriverLocation.h"

#include <gmock/gmock.h>

#include "AllocationFault.h"
#include "Machine.h"
#include "OwnProcess.h"

namespace {

using Calls = std::vector<std::string>;

const std::string ENUM_KEY = "SYSTEM\\CurrentControlSet\\Services\\rztvamcdm\\Enum";
const std::string INFO_KEY =
    "SYSTEM\\CurrentControlSet\\Enum\\ACPI\\DEV0\\0\\Device Parameters\\TVAM\\INFO";
const std::string MARKING = "LumarixEnabledDSPInfo";
constexpr LPCWSTR DSP = WIDE("rzkelbrpc");
constexpr const char* TVAM_DIRECTORY = "C:\\Windows\\System32\\tvam";
constexpr const char* DSP_DIRECTORY = "C:\\Windows\\dsp";

const std::optional<WideString> TVAM_PATH = WIDE("\\SystemRoot\\System32\\tvam\\a.sys");
const std::string DEVICE("ACPI\\DEV0\\0\0", 12);
constexpr DWORD TEXT = RRF_RT_REG_SZ, BINARY = RRF_RT_REG_BINARY;

/// Both services installed, and the accelerator marked for remote calls.
void install(Machine& machine, const std::string& marking = "\x08") {
  machine.services[WIDE("rztvamcdm")].binaryPath = TVAM_PATH;
  machine.services[DSP].binaryPath = WIDE("\\SystemRoot\\dsp\\d.sys");
  machine.windir = WIDE("C:\\Windows");
  machine.registry[ENUM_KEY]["0"] = {TEXT, DEVICE};
  machine.registry[INFO_KEY][MARKING] = {BINARY, marking};
}

TEST(DriverLocation, AsksInThisOrderWithTheseRightsAndClosesAsItGoes) {
  Machine machine;
  install(machine);
  EXPECT_EQ(locateDriverDirectory(), TVAM_DIRECTORY);
  const Calls expected{"OpenSCManagerW 20000",
                       "OpenServiceW rztvamcdm 1",
                       "QueryServiceConfigW size",
                       "LocalAlloc 0",
                       "QueryServiceConfigW read",
                       "LocalFree",
                       "CloseServiceHandle",
                       "CloseServiceHandle",
                       "GetEnvironmentVariableW windir size",
                       "GetEnvironmentVariableW windir read",
                       "WideCharToMultiByte fde9 size",
                       "WideCharToMultiByte fde9 read",
                       "RegOpenKeyExA " + ENUM_KEY + " 20019",
                       "RegGetValueA 0 2 size",
                       "RegGetValueA 0 2 read",
                       "RegCloseKey",
                       "RegOpenKeyExA " + INFO_KEY + " 20019",
                       "RegGetValueA " + MARKING + " 8 size",
                       "RegGetValueA " + MARKING + " 8 read",
                       "RegCloseKey"};
  EXPECT_EQ(machine.calls, expected);
}

TEST(DriverLocation, SurvivesTheFailureOfAnyCall) {
  constexpr int CALLS_OF_A_SERVICE = 9;
  constexpr int CALLS_BEFORE_DSP = CALLS_OF_A_SERVICE + 6;  // with the registry's
  for (const bool isMarked : {true, false}) {
    for (int n = 1; n <= CALLS_BEFORE_DSP + CALLS_OF_A_SERVICE; ++n) {
      SCOPED_TRACE(n);
      Machine machine;
      install(machine, isMarked ? "\x08" : "\x07");
      machine.failingCall = n;
      const std::string directory = locateDriverDirectory();
      if (n <= CALLS_BEFORE_DSP) {
        EXPECT_EQ(directory, DSP_DIRECTORY);
      } else {
        EXPECT_EQ(directory, isMarked ? TVAM_DIRECTORY : "");
      }
      EXPECT_EQ(machine.CallsOf("RegOpenKeyExA").empty(), n <= CALLS_OF_A_SERVICE);
      EXPECT_EQ(machine.FaultHappened(), n <= CALLS_BEFORE_DSP || !isMarked);
    }
  }
}

TEST(DriverLocation, PrefersTheAcceleratorOnlyWhenMarked) {
  using Path = std::optional<WideString>;
  const struct {
    Path accelerator;  ///< Empty when it is not installed.
    Machine::Value device, marking;
    std::string asked;  ///< Services and keys, by the last part of their names.
    const char* directory = DSP_DIRECTORY;
  } rows[] = {
      {TVAM_PATH, {TEXT, DEVICE}, {BINARY, "\x08"}, "rztvamcdm Enum INFO", TVAM_DIRECTORY},
      {TVAM_PATH, {TEXT, DEVICE + '!'}, {BINARY, "\x08"}, "rztvamcdm Enum INFO", TVAM_DIRECTORY},
      {Path(), {TEXT, DEVICE}, {BINARY, "\x08"}, "rztvamcdm rzkelbrpc"},
      {WIDE("C:\\a.sys"), {TEXT, DEVICE}, {BINARY, "\x08"}, "rztvamcdm rzkelbrpc"},
      {TVAM_PATH, {BINARY, DEVICE}, {BINARY, "\x08"}, "rztvamcdm Enum rzkelbrpc"},
      {TVAM_PATH, {TEXT, DEVICE}, {TEXT, "\x08"}, "rztvamcdm Enum INFO rzkelbrpc"},
      {TVAM_PATH, {TEXT, DEVICE}, {BINARY, "\x18"}, "rztvamcdm Enum INFO rzkelbrpc"},
      {TVAM_PATH, {TEXT, DEVICE}, {BINARY, ""}, "rztvamcdm Enum INFO rzkelbrpc"},
      {TVAM_PATH, {TEXT, DEVICE}, {BINARY, "\x08\x08"}, "rztvamcdm Enum INFO rzkelbrpc"},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(i);
    Machine machine;
    install(machine);
    machine.services[WIDE("rztvamcdm")].binaryPath = rows[i].accelerator;
    if (!rows[i].accelerator) {
      machine.services.erase(WIDE("rztvamcdm"));
    }
    machine.registry[ENUM_KEY]["0"] = rows[i].device;
    machine.registry[INFO_KEY][MARKING] = rows[i].marking;
    EXPECT_EQ(locateDriverDirectory(), rows[i].directory);
    std::string asked;
    for (const std::string& call : machine.calls) {
      if (call.starts_with("OpenServiceW") || call.starts_with("RegOpenKeyExA")) {
        const std::string name = call.substr(0, call.rfind(' '));
        asked += (asked.empty() ? "" : " ") + name.substr(name.find_last_of(" \\") + 1);
      }
    }
    EXPECT_EQ(asked, rows[i].asked);
  }
}

TEST(DriverLocation, IsNotMarkedWithoutMemoryForTheDevice) {
  Machine machine;
  install(machine);
  const AllocationFault fault(AllocationFault::MALLOC, 1);
  EXPECT_FALSE(acceleratorRemoteCallsEnabled());
  EXPECT_TRUE(fault.Happened());
}

TEST(DriverLocation, AcceptsOnlyPathsUnderTheSystemRoot) {
  const WideString typical = WIDE("\\SystemRoot\\pkg\\x.sys");
  const WideString windows = WIDE("C:\\Windows");
  const struct {
    std::optional<WideString> binaryPath;
    const char* directory;
    WideString windir = WIDE("C:\\Windows");       ///< When its size is asked.
    WideString windirLater = WIDE("C:\\Windows");  ///< When it is read.
    DWORD sizeReported = 0;
  } rows[] = {
      {WIDE("\\SystemRoot\\x.sys"), "C:\\Windows"},
      // The eleven units decide alone.
      {WIDE("\\SystemRoots\\x.sys"), "C:\\Windowss"},
      {WIDE("\\SystemRoo\\x.sys"), ""},
      {WIDE("\\SYSTEMROOT\\pkg\\x.sys"), ""},
      {WIDE("\\SystemRoot\\pkg/a\\b/x.sys"), "C:\\Windows\\pkg/a"},
      {WIDE("\\SystemRoot"), ""},
      {WIDE("SystemRoot.sys"), ""},
      {WIDE("\"\\SystemRoot\\pkg\\x.sys\""), ""},
      {std::nullopt, ""},
      {WIDE("\\SystemRoot\\p\u00e4k\u6f22\\x.sys"), "D:\\W\xC3\xAFn\\p\xC3\xA4k\xE6\xBC\xA2",
       WIDE("D:\\W\u00efn"), WIDE("D:\\W\u00efn")},
      {typical, "", WIDE(""), WIDE("")},
      {typical, "D:\\W\\pkg", windows, WIDE("D:\\W")},
      {typical, "", windows, WIDE("D:\\LongerThanBefore")},
      {typical, "", windows, windows, sizeof(QUERY_SERVICE_CONFIGW) - 1},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(i);
    Machine machine;
    machine.services[DSP] = {rows[i].binaryPath, rows[i].sizeReported};
    machine.before = [&](std::string_view function, int nth) {
      if (function == "GetEnvironmentVariableW") {
        machine.windir = nth == 1 ? rows[i].windir : rows[i].windirLater;
      }
    };
    EXPECT_EQ(serviceBinaryDirectory(DSP), rows[i].directory);
  }
}

TEST(DriverLocation, IsRememberedFoundOrNot) {
  for (const bool isInstalled : {true, false}) {
    inOwnProcess([&] {
      Machine machine;
      if (isInstalled) {
        install(machine);
      }
      const std::string expected = isInstalled ? TVAM_DIRECTORY : "";
      EXPECT_EQ(driverPackageDirectory(), expected);
      machine.calls.clear();
      EXPECT_EQ(driverPackageDirectory(), expected);
      EXPECT_EQ(machine.calls, Calls());
    });
  }
}

}  // namespace
