/// Driver location: the directory of the driver package, from the path of a driver service's
/// binary. The provider loader looks there for a system-info provider.
///
/// No function reports an error. If a system call fails, the result is empty or false. Every
/// function may throw `std::bad_alloc`.
#pragma once

#include <string>

#include "platform/WindowsApi.h"

using WideString = std::basic_string<WCHAR>;

/// The driver package's directory in UTF-8, with backslashes and none at the end; empty if not
/// found. The first caller in the process locates it. Callers on other threads wait.
std::string driverPackageDirectory();

/// Locates the directory. It is the accelerator driver's if the registry enables remote calls for
/// the device, else the DSP remote-call driver's.
std::string locateDriverDirectory();

/// The directory of a service's binary, with the system root expanded; empty for any other path.
std::string serviceBinaryDirectory(LPCWSTR serviceName);

/// Whether the registry marks the accelerator's first device for remote calls.
bool acceleratorRemoteCallsEnabled();

/// The UTF-8 form of zero-terminated UTF-16 text; empty if it cannot be converted.
std::string wideToUtf8(const WideString& text);
