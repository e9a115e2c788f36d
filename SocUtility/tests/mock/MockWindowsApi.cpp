// The functions of the platform, answered from the scenario's machine. An argument that has but one
// right value is checked here, in every test; the others are part of the record.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "AllocationFault.h"
#include "Machine.h"
#include "platform/WindowsApi.h"

// NOLINTBEGIN(performance-no-int-to-ptr, readability-non-const-parameter): made-up addresses, and
// the parameters of WindowsApi.h.

namespace {

constexpr LSTATUS UNSUPPORTED_TYPE = 1630;
const HANDLE THIS_PROCESS = reinterpret_cast<HANDLE>(-1);

Machine& machine() { return Machine::Current(); }

std::string text(const char* text) { return text == nullptr ? "null" : text; }
std::string text(LPCWSTR wide) { return std::filesystem::path(wide).string(); }
std::string text(std::uint64_t number) {
  char digits[16];
  return {digits, std::to_chars(std::begin(digits), std::end(digits), number, 16).ptr};
}
std::string text(HMODULE module) {
  Machine::Module* const found = module == nullptr ? nullptr : machine().Find(module);
  return found == nullptr ? "null" : found->name;
}

/// Whether a call asks for the answer or only for its size.
const char* purpose(const void* buffer) { return buffer == nullptr ? "size" : "read"; }

/// One call of a platform function, on the record.
struct Call {
  template <class... Arguments>
  explicit Call(const char* function, Arguments... arguments)
      : fails(machine().Note(function, (std::string() + ... + (' ' + text(arguments))))) {}

  AllocationFault::Pause pause;  // before all else: the record allocates
  bool fails;
};

}  // namespace

DWORD GetLastError() { return machine().lastError; }
void SetLastError(DWORD code) { machine().lastError = code; }
HANDLE GetCurrentProcess() { return THIS_PROCESS; }

UINT GetSystemFirmwareTable(DWORD provider, DWORD tableId, PVOID buffer, DWORD bufferSize) {
  const Call call("GetSystemFirmwareTable", tableId, bufferSize);
  EXPECT_EQ(provider, 0x41435049U);
  const auto found = machine().firmware.find(tableId);
  if (call.fails || found == machine().firmware.end()) {
    return 0;
  }
  const auto& [bytes, sizeReported] = found->second;
  if (buffer == nullptr) {
    EXPECT_EQ(bufferSize, 0U);
    return sizeReported != 0 ? sizeReported : static_cast<UINT>(bytes.size());
  }
  if (bufferSize >= bytes.size()) {
    std::ranges::copy(bytes, static_cast<BYTE*>(buffer));
  }
  return static_cast<UINT>(bytes.size());
}

HMODULE LoadLibraryExA(LPCSTR name, HANDLE file, DWORD flags) {
  const Call call("LoadLibraryExA", name, flags);
  EXPECT_EQ(file, nullptr);
  if (call.fails) {
    return nullptr;
  }
  auto& modules = machine().modules;
  auto module = std::ranges::find(modules, name, &Machine::Module::name);
  if (module == modules.end()) {
    const auto library = machine().libraries.find(name);
    if (library == machine().libraries.end()) {
      return nullptr;
    }
    machine().AddModule(name, library->second, false);
    module = modules.end() - 1;
  }
  ++module->references;
  return module->handle;
}

HMODULE GetModuleHandleA(LPCSTR name) {
  const Call call("GetModuleHandleA", name);
  const auto module = std::ranges::find(machine().modules, name, &Machine::Module::name);
  return call.fails || module == machine().modules.end() ? nullptr : module->handle;
}

BOOL FreeLibrary(HMODULE module) {
  const Call call("FreeLibrary", module);
  Machine::Module* const found = machine().Find(module);
  if (call.fails || found == nullptr) {
    return FALSE;
  }
  EXPECT_GT(found->references, 0) << "not a reference of the library's: " << found->name;
  if (--found->references == 0 && !found->isResident) {
    std::erase_if(machine().modules, [=](const auto& each) { return each.handle == module; });
  }
  return TRUE;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  const Call call("GetProcAddress", module, name);
  Machine::Module* const found = module == nullptr ? nullptr : machine().Find(module);
  const auto& symbols = found == nullptr ? machine().programSymbols : found->symbols;
  const auto symbol = symbols.find(name);
  return call.fails || symbol == symbols.end() ? nullptr
                                               : reinterpret_cast<FARPROC>(symbol->second);
}

BOOL GetModuleHandleExA(DWORD flags, LPCSTR name, HMODULE* module) {
  const Call call("GetModuleHandleExA", flags);
  EXPECT_NE(name, nullptr);
  if (call.fails) {
    return FALSE;
  }
  *module = machine().ownModule;
  return TRUE;
}

DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
  const Call call("GetModuleFileNameA", module, size);
  Machine::Module* const found = machine().Find(module);
  if (call.fails || found == nullptr) {
    return 0;
  }
  const std::size_t length = std::min<std::size_t>(found->name.size(), size - 1);
  path[found->name.copy(path, length)] = '\0';
  if (length < found->name.size()) {
    machine().lastError = ERROR_INSUFFICIENT_BUFFER;
    return size;
  }
  return static_cast<DWORD>(length);
}

BOOL K32EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, LPDWORD needed) {
  const Call call("K32EnumProcessModules", purpose(modules));
  EXPECT_EQ(process, THIS_PROCESS);
  EXPECT_TRUE(modules != nullptr || size == 0);
  if (call.fails) {
    return FALSE;
  }
  *needed = static_cast<DWORD>(machine().modules.size() * sizeof(HMODULE));
  for (std::size_t i = 0; i < std::min(size, *needed) / sizeof(HMODULE); ++i) {
    modules[i] = machine().modules[i].handle;
  }
  return TRUE;
}

SC_HANDLE OpenSCManagerW(LPCWSTR machineName, LPCWSTR database, DWORD access) {
  const Call call("OpenSCManagerW", access);
  EXPECT_TRUE(machineName == nullptr && database == nullptr);
  return static_cast<SC_HANDLE>(call.fails ? nullptr : machine().Open("service manager"));
}

SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access) {
  const Call call("OpenServiceW", name, access);
  machine().Use(manager, "service manager");
  if (call.fails || !machine().services.contains(name)) {
    machine().lastError = ERROR_SERVICE_DOES_NOT_EXIST;
    return nullptr;
  }
  return static_cast<SC_HANDLE>(machine().Open("service " + text(name)));
}

BOOL QueryServiceConfigW(SC_HANDLE service, LPQUERY_SERVICE_CONFIGW config, DWORD size,
                         LPDWORD needed) {
  const Call call("QueryServiceConfigW", purpose(config));
  const std::string name = machine().Use(service, "service ").substr(std::strlen("service "));
  if (call.fails) {
    return FALSE;
  }
  const auto& [path, sizeReported] = machine().services.at({name.begin(), name.end()});
  const auto room = static_cast<DWORD>(path ? (path->size() + 1) * sizeof(WCHAR) : 0);
  *needed = sizeReported != 0 ? sizeReported : static_cast<DWORD>(sizeof *config) + room;
  if (size < *needed) {
    machine().lastError = ERROR_INSUFFICIENT_BUFFER;
    return FALSE;
  }
  machine().Use(config, "block");
  *config = {};
  if (path) {
    config->lpBinaryPathName = reinterpret_cast<LPWSTR>(config + 1);
    std::memcpy(config->lpBinaryPathName, path->c_str(), room);
  }
  return TRUE;
}

BOOL CloseServiceHandle(SC_HANDLE handle) {
  const Call call("CloseServiceHandle");
  machine().Close(handle, "service ");
  return TRUE;
}

HLOCAL LocalAlloc(UINT flags, SIZE_T size) {
  const Call call("LocalAlloc", flags);
  if (call.fails) {
    return nullptr;
  }
  return machine().Open("block", std::malloc(size));
}

HLOCAL LocalFree(HLOCAL block) {
  const Call call("LocalFree");
  machine().Close(block, "block");
  std::free(block);
  return nullptr;
}

LSTATUS RegOpenKeyExA(HKEY parent, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
  const Call call("RegOpenKeyExA", path, access);
  EXPECT_TRUE(parent == HKEY_LOCAL_MACHINE && options == 0);
  if (call.fails || !machine().registry.contains(path)) {
    return ERROR_FILE_NOT_FOUND;
  }
  *key = static_cast<HKEY>(machine().Open("key " + text(path)));
  return ERROR_SUCCESS;
}

LSTATUS RegGetValueA(HKEY key, LPCSTR subKey, LPCSTR value, DWORD flags, LPDWORD type, PVOID data,
                     LPDWORD size) {
  const Call call("RegGetValueA", value, flags, purpose(data));
  EXPECT_TRUE(subKey == nullptr && type == nullptr);
  const auto& values = machine().registry[machine().Use(key, "key ").substr(std::strlen("key "))];
  const auto found = values.find(value);
  if (call.fails || found == values.end()) {
    return ERROR_FILE_NOT_FOUND;
  }
  if (found->second.type != flags) {
    return UNSUPPORTED_TYPE;
  }
  const std::string& bytes = found->second.bytes;
  const DWORD offered = std::exchange(*size, static_cast<DWORD>(bytes.size()));
  if (data != nullptr) {
    if (offered < bytes.size()) {
      return ERROR_MORE_DATA;
    }
    bytes.copy(static_cast<char*>(data), bytes.size());
  }
  return ERROR_SUCCESS;
}

LSTATUS RegCloseKey(HKEY key) {
  const Call call("RegCloseKey");
  machine().Close(key, "key ");
  return ERROR_SUCCESS;
}

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD size) {
  const Call call("GetEnvironmentVariableW", name, purpose(buffer));
  const auto& value = machine().windir;
  if (call.fails || text(name) != "windir" || !value) {
    machine().lastError = ERROR_ENVVAR_NOT_FOUND;
    return 0;
  }
  const auto length = static_cast<DWORD>(value->size());
  if (size <= length) {
    return length + 1;
  }
  std::copy_n(value->c_str(), length + 1, buffer);
  return length;
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideLength, LPSTR bytes,
                        int size, LPCSTR defaultChar, LPBOOL usedDefaultChar) {
  const Call call("WideCharToMultiByte", codePage, purpose(bytes));
  EXPECT_TRUE(flags == 0 && wideLength == -1);
  EXPECT_TRUE(defaultChar == nullptr && usedDefaultChar == nullptr);
  const std::string converted = text(wide);
  const auto needed = static_cast<int>(converted.size()) + 1;
  if (call.fails || (size != 0 && size < needed)) {
    return 0;
  }
  if (size != 0) {
    std::memcpy(bytes, converted.c_str(), converted.size() + 1);
  }
  return needed;
}

// NOLINTEND(performance-no-int-to-ptr, readability-non-const-parameter)
