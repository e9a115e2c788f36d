#include "DynamicSocInfo/provider/DriverLocation.h"

#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <type_traits>

namespace {

using WideView = std::basic_string_view<WCHAR>;

constexpr LPCWSTR ACCELERATOR_SERVICE = WIDE("rztvamcdm");
constexpr LPCWSTR DSP_REMOTE_CALL_SERVICE = WIDE("rzkelbrpc");
constexpr WideView SYSTEM_ROOT = WIDE("\\SystemRoot");
constexpr BYTE REMOTE_CALLS_ENABLED = 8;

struct CloseService {
  void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};
using ServiceHandle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, CloseService>;

struct CloseKey {
  void operator()(HKEY key) const { RegCloseKey(key); }
};
using KeyHandle = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseKey>;

struct FreeLocal {
  void operator()(void* block) const { LocalFree(block); }
};

/// The path of a service's binary as the service manager stores it, or empty.
WideString serviceBinaryPath(LPCWSTR serviceName) {
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, STANDARD_RIGHTS_READ));
  if (!manager) {
    return {};
  }
  const ServiceHandle service(OpenServiceW(manager.get(), serviceName, SERVICE_QUERY_CONFIG));
  if (!service) {
    return {};
  }
  DWORD size = 0;
  if (QueryServiceConfigW(service.get(), nullptr, 0, &size) == FALSE &&
      GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
    return {};
  }
  const std::unique_ptr<void, FreeLocal> block(LocalAlloc(LMEM_FIXED, size));
  auto* const config = static_cast<LPQUERY_SERVICE_CONFIGW>(block.get());
  if (config == nullptr || QueryServiceConfigW(service.get(), config, size, &size) == FALSE ||
      config->lpBinaryPathName == nullptr) {
    return {};
  }
  return config->lpBinaryPathName;
}

/// An environment variable's value, or empty.
WideString environmentVariable(LPCWSTR name) {
  const DWORD size = GetEnvironmentVariableW(name, nullptr, 0);
  if (size == 0) {
    return {};
  }
  WideString buffer(size, WCHAR{});
  if (GetEnvironmentVariableW(name, buffer.data(), size) == 0) {
    return {};
  }
  return buffer.substr(0, buffer.find(WCHAR{}));  // it may have changed since its size was read
}

KeyHandle openLocalMachineKey(const std::string& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return {};
  }
  return KeyHandle(key);
}

/// Reads a value of this type into `size` bytes. A null `data` only asks for the value's size.
bool readValue(const KeyHandle& key, LPCSTR name, DWORD type, void* data, DWORD& size) {
  return key && RegGetValueA(key.get(), nullptr, name, type, nullptr, data, &size) == ERROR_SUCCESS;
}

/// The instance path of the first device that the accelerator's service drives, or nothing.
std::optional<std::string> acceleratorInstancePath() {
  constexpr WideView SERVICE = ACCELERATOR_SERVICE;  // all of it is ASCII
  const KeyHandle devices =
      openLocalMachineKey("SYSTEM\\CurrentControlSet\\Services\\" +
                          std::string(SERVICE.begin(), SERVICE.end()) + "\\Enum");
  DWORD size = 0;
  if (!readValue(devices, "0", RRF_RT_REG_SZ, nullptr, size)) {
    return std::nullopt;
  }
  const std::unique_ptr<char[]> text(new (std::nothrow) char[std::size_t{size} + 1]());
  if (!text || !readValue(devices, "0", RRF_RT_REG_SZ, text.get(), size)) {
    return std::nullopt;
  }
  return text.get();
}

}  // namespace

std::string driverPackageDirectory() {
  static const std::string directory = locateDriverDirectory();
  return directory;
}

std::string locateDriverDirectory() {
  std::string accelerator = serviceBinaryDirectory(ACCELERATOR_SERVICE);
  if (!accelerator.empty() && acceleratorRemoteCallsEnabled()) {
    return accelerator;
  }
  return serviceBinaryDirectory(DSP_REMOTE_CALL_SERVICE);
}

std::string serviceBinaryDirectory(LPCWSTR serviceName) {
  WideString directory = serviceBinaryPath(serviceName);
  if (const auto separator = directory.rfind(WCHAR{'\\'}); separator != WideString::npos) {
    directory.resize(separator);
  }
  if (!directory.starts_with(SYSTEM_ROOT)) {
    return {};
  }
  const WideString windowsDirectory = environmentVariable(WIDE("windir"));
  if (windowsDirectory.empty()) {
    return {};
  }
  return wideToUtf8(directory.replace(0, SYSTEM_ROOT.size(), windowsDirectory));
}

bool acceleratorRemoteCallsEnabled() {
  const std::optional<std::string> instancePath = acceleratorInstancePath();
  if (!instancePath) {
    return false;
  }
  const KeyHandle info = openLocalMachineKey("SYSTEM\\CurrentControlSet\\Enum\\" + *instancePath +
                                             "\\Device Parameters\\TVAM\\INFO");
  constexpr LPCSTR MARKING = "LumarixEnabledDSPInfo";
  BYTE marking = 0;
  DWORD size = 0;
  return readValue(info, MARKING, RRF_RT_REG_BINARY, nullptr, size) && size == sizeof marking &&
         readValue(info, MARKING, RRF_RT_REG_BINARY, &marking, size) &&
         marking == REMOTE_CALLS_ENABLED;
}

std::string wideToUtf8(const WideString& text) {
  if (text.empty()) {
    return {};
  }
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
  if (size <= 0) {
    return {};
  }
  // `size` counts a terminator. `std::string` adds its own.
  std::string bytes(static_cast<std::size_t>(size) - 1, '\0');
  if (WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, bytes.data(), size, nullptr, nullptr) <=
      0) {
    return {};
  }
  return bytes;
}
