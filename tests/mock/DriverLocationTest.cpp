#include "DynamicSocInfo/provider/DriverLocation.h"

#include <gtest/gtest.h>

#include "AllocationFault.h"
#include "Machine.h"

namespace {

const std::string ENUM_KEY = "SYSTEM\\CurrentControlSet\\Services\\rztvamcdm\\Enum";
const std::string INFO_KEY =
    "SYSTEM\\CurrentControlSet\\Enum\\ACPI\\DEV0\\0\\Device Parameters\\TVAM\\INFO";
const std::string TVAM_DIRECTORY = "C:\\Windows\\System32\\tvam";
const std::string DSP_DIRECTORY = "C:\\Windows\\dsp";
const std::string DEVICE("ACPI\\DEV0\\0\0", 12);

/// Both services installed, and the accelerator marked for remote calls.
void install(Machine& machine, const std::string& marking = "\x08",
             const std::string& device = DEVICE) {
  machine.services[WIDE("rztvamcdm")] = WIDE("\\SystemRoot\\System32\\tvam\\a.sys");
  machine.services[WIDE("rzkelbrpc")] = WIDE("\\SystemRoot\\dsp\\d.sys");
  machine.windir = WIDE("C:\\Windows");
  machine.registry[ENUM_KEY]["0"] = device;
  machine.registry[INFO_KEY]["LumarixEnabledDSPInfo"] = marking;
}

TEST(DriverLocation, SurvivesTheFailureOfAnyCall) {
  constexpr int CALLS_OF_A_SERVICE = 9;
  constexpr int CALLS_BEFORE_DSP = CALLS_OF_A_SERVICE + 6;  // with the registry's
  for (int n = 1; n <= CALLS_BEFORE_DSP + CALLS_OF_A_SERVICE; ++n) {
    SCOPED_TRACE(n);
    Machine machine;
    install(machine, n <= CALLS_BEFORE_DSP ? "\x08" : "\x07");
    machine.failingCall = n;
    EXPECT_EQ(locateDriverDirectory(), n <= CALLS_BEFORE_DSP ? DSP_DIRECTORY : "");
    EXPECT_EQ(machine.CallsOf("RegOpenKeyExA").empty(), n <= CALLS_OF_A_SERVICE);
  }
}

TEST(DriverLocation, IsNotMarkedWithoutMemoryForTheDevice) {
  for (int n = 1, reported = 0; reported == 0; ++n) {
    Machine machine;
    install(machine);
    const AllocationFault fault(n);
    try {
      EXPECT_FALSE(acceleratorRemoteCallsEnabled());
      ++reported;
    } catch (const std::bad_alloc&) {  // for one of the strings
    }
  }
}

TEST(DriverLocation, PrefersTheAcceleratorOnlyWhenMarked) {
  const struct {
    std::string marking, device, directory;
  } rows[] = {
      {"\x08", DEVICE + "bytes behind it", TVAM_DIRECTORY},
      {"\x18", DEVICE, DSP_DIRECTORY},
      {"\x08\x08", DEVICE, DSP_DIRECTORY},
  };
  for (const auto& [marking, device, directory] : rows) {
    SCOPED_TRACE(marking);
    Machine machine;
    install(machine, marking, device);
    EXPECT_EQ(locateDriverDirectory(), directory);
  }
}

TEST(DriverLocation, AcceptsOnlyPathsUnderTheSystemRoot) {
  const WideString typical = WIDE("\\SystemRoot\\pkg\\x.sys");
  const struct {
    WideString binaryPath;
    const char* directory;
    WideString windir = WIDE("C:\\Windows");  ///< When its size is asked.
    WideString windirLater = windir;          ///< When it is read.
  } rows[] = {
      {WIDE("\\SystemRoot\\x.sys"), "C:\\Windows"},
      // The eleven units decide alone.
      {WIDE("\\SystemRoots\\x.sys"), "C:\\Windowss"},
      {WIDE("\\SYSTEMROOT\\pkg\\x.sys"), ""},
      {WIDE("\\SystemRoot\\pkg/a\\b/x.sys"), "C:\\Windows\\pkg/a"},
      {WIDE("SystemRoot.sys"), ""},
      {WIDE("\\SystemRoot\\p\u00e4k\u6f22\\x.sys"), "D:\\W\xC3\xAFn\\p\xC3\xA4k\xE6\xBC\xA2",
       WIDE("D:\\W\u00efn")},
      {typical, "D:\\W\\pkg", WIDE("C:\\Windows"), WIDE("D:\\W")},
      {typical, "", WIDE("C:\\Windows"), WIDE("D:\\LongerThanBefore")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    Machine machine;
    machine.services[WIDE("rzkelbrpc")] = row.binaryPath;
    machine.before = [&](const std::string& call) {
      machine.windir = call.ends_with("size") ? row.windir : row.windirLater;
    };
    EXPECT_EQ(serviceBinaryDirectory(WIDE("rzkelbrpc")), row.directory);
  }
}

TEST(DriverLocation, IsRememberedEvenWhenNotFound) {
  inOwnProcess([] {
    Machine machine;
    EXPECT_EQ(driverPackageDirectory(), "");
    install(machine);
    EXPECT_EQ(driverPackageDirectory(), "");
  });
}

}  // namespace
