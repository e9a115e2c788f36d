// Driver location in a program whose ADVAPI32 cannot be loaded.
#include <gtest/gtest.h>

#include "DynamicSocInfo/provider/DriverLocation.h"

// clang-format off
#include <delayimp.h>  // relies on the system's types
// clang-format on

namespace {

/// Lets the loader look for a file that does not exist.
FARPROC WINAPI renameLibrary(unsigned event, PDelayLoadInfo load) {
  if (event == dliNotePreLoadLibrary) {
    load->szDll = "no-such-library.dll";
  }
  return nullptr;
}

TEST(DelayLoadFailure, MeansNoServiceManagerAndNoKey) {
  EXPECT_EQ(OpenSCManagerW(nullptr, nullptr, STANDARD_RIGHTS_READ), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
  HKEY key = nullptr;
  EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SYSTEM", 0, KEY_READ, &key), ERROR_MOD_NOT_FOUND);
  EXPECT_EQ(locateDriverDirectory(), "");
  EXPECT_FALSE(acceleratorRemoteCallsEnabled());
}

}  // namespace

extern "C" decltype(__pfnDliNotifyHook2) __pfnDliNotifyHook2 = renameLibrary;
