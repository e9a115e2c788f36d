/// Driver location: the directory of the chip's driver package, as the service that loads the
/// driver tells it. The provider loader looks there for a system-info provider.
///
/// No operation reports an error: whatever the platform refuses ends in an empty directory or
/// false. Every operation may throw `std::bad_alloc`.
#pragma once

#include <string>

#include "platform/WindowsApi.h"

using WideString = std::basic_string<WCHAR>;

/// The driver package's directory, UTF-8, with backslashes and without a trailing one; empty when
/// it was not found. Located once per process, by the first caller; further ones wait for it.
std::string driverPackageDirectory();

/// Locates the directory afresh: the accelerator driver's if the registry enables remote calls for
/// the device, otherwise the DSP remote-call driver's.
std::string locateDriverDirectory();

/// The directory of a service's binary, if it lies under the system root, with the root expanded.
std::string serviceBinaryDirectory(LPCWSTR serviceName);

/// Whether the registry marks the accelerator's first device for remote calls.
bool acceleratorRemoteCallsEnabled();

/// UTF-8 form of zero-terminated UTF-16 text; empty when it cannot be converted.
std::string wideToUtf8(const WideString& text);
