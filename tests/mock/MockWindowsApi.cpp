// The functions of the platform, answered from the scenario's machine. An argument that decides
// neither the answer nor a test is not looked at.
#include "platform/WindowsApi.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "AllocationFault.h"
#include "Machine.h"

// NOLINTBEGIN(readability-non-const-parameter): the parameters of WindowsApi.h

namespace {

Machine& machine() { return *Machine::current; }

/// Whether a call asks for the answer or only for its size.
const char* purpose(const void* buffer) { return buffer == nullptr ? "size" : "read"; }

/// One call of a platform function, on the record.
struct Call {
  template <class... Arguments>
  explicit Call(const char* function, const Arguments&... arguments) {
    std::ostringstream record;
    record << std::hex << function;
    ((record << ' ' << arguments), ...);
    machine().before(machine().calls.emplace_back(record.str()));
    fails = ++machine().countedCalls == machine().failingCall;
  }

  AllocationFault none{0};  // before all else: the record allocates
  bool fails;
};

Machine::Module& moduleOf(HMODULE handle) {
  auto& module =
      handle == nullptr ? machine().program : *reinterpret_cast<Machine::Module*>(handle);
  EXPECT_TRUE(module.IsLoaded()) << "used after its release: " << module.name;
  return module;
}

/// Notes a handle or block as open.
void* opened(void* handle) {
  ++machine().openHandles;
  return handle;
}

/// Records the call that closes a handle or block; whether one was open.
bool noteClosing(const char* function) {
  const AllocationFault none(0);
  machine().calls.emplace_back(function);
  return --machine().openHandles >= 0;
}

HMODULE handleOf(Machine::Module* module) { return reinterpret_cast<HMODULE>(module); }

}  // namespace

DWORD GetLastError() { return machine().lastError; }
void SetLastError(DWORD code) { machine().lastError = code; }
DWORD GetCurrentThreadId() { return 1; }

HANDLE GetCurrentProcess() { return nullptr; }

UINT GetSystemFirmwareTable(DWORD provider, DWORD tableId, PVOID buffer, DWORD bufferSize) {
  const Call call("GetSystemFirmwareTable", provider, tableId, bufferSize);
  if (call.fails) {
    return bufferSize + 1;  // as if the table had grown since its size was asked
  }
  const Machine::Table& table = machine().firmware[tableId];
  if (bufferSize >= table.size()) {
    std::ranges::copy(table, static_cast<BYTE*>(buffer));
  }
  return static_cast<UINT>(table.size());
}

HMODULE LoadLibraryExA(LPCSTR name, HANDLE, DWORD flags) {
  const Call call("LoadLibraryExA", flags, name);
  const auto module = std::ranges::find(machine().modules, name, &Machine::Module::name);
  if (call.fails || module == machine().modules.end()) {
    return nullptr;
  }
  ++module->references;
  return handleOf(&*module);
}

HMODULE GetModuleHandleA(LPCSTR name) {
  const Call call("GetModuleHandleA");
  const auto module = std::ranges::find(machine().modules, name, &Machine::Module::name);
  return module->IsLoaded() ? handleOf(&*module) : nullptr;
}

BOOL FreeLibrary(HMODULE module) {
  const Call call("FreeLibrary", moduleOf(module).name);
  moduleOf(module).references -= call.fails ? 0 : 1;
  return call.fails ? FALSE : TRUE;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  const auto& [moduleName, symbols, isResident, references] = moduleOf(module);
  const Call call("GetProcAddress", moduleName, name);
  const auto symbol = symbols.find(name);
  const bool isFound = !call.fails && symbol != symbols.end();
  return isFound ? reinterpret_cast<FARPROC>(symbol->second) : nullptr;
}

BOOL GetModuleHandleExA(DWORD flags, LPCSTR, HMODULE* module) {
  const Call call("GetModuleHandleExA");
  EXPECT_EQ(flags,
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
  *module = handleOf(machine().ownModule);
  return call.fails ? FALSE : TRUE;
}

DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
  const std::string& name = moduleOf(module).name;
  const Call call("GetModuleFileNameA", name);
  // A path that does not fit is cut without a terminator and without an error.
  std::fill_n(path, size, '\0');
  return call.fails ? 0 : static_cast<DWORD>(name.copy(path, size));
}

BOOL K32EnumProcessModules(HANDLE, HMODULE* modules, DWORD size, LPDWORD needed) {
  const Call call("K32EnumProcessModules", purpose(modules));
  *needed = 0;
  for (Machine::Module& module : machine().modules) {
    if (module.IsLoaded()) {
      if (*needed < size) {
        modules[*needed / sizeof(HMODULE)] = handleOf(&module);
      }
      *needed += sizeof(HMODULE);
    }
  }
  return call.fails ? FALSE : TRUE;
}

SC_HANDLE OpenSCManagerW(LPCWSTR, LPCWSTR, DWORD access) {
  const Call call("OpenSCManagerW");
  EXPECT_EQ(access, STANDARD_RIGHTS_READ);
  return call.fails ? nullptr : static_cast<SC_HANDLE>(opened(&machine().services));
}

SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access) {
  const Call call("OpenServiceW");
  EXPECT_EQ(access, SERVICE_QUERY_CONFIG);
  auto& services = *reinterpret_cast<decltype(Machine::services)*>(manager);
  const auto service = services.find(name);
  const bool isFound = !call.fails && service != services.end();
  return isFound ? static_cast<SC_HANDLE>(opened(&service->second)) : nullptr;
}

BOOL QueryServiceConfigW(SC_HANDLE service, LPQUERY_SERVICE_CONFIGW config, DWORD size,
                         LPDWORD needed) {
  const Call call("QueryServiceConfigW", purpose(config));
  const auto& path = *reinterpret_cast<WideString*>(service);
  const std::size_t pathBytes = (path.size() + 1) * sizeof(WCHAR);
  *needed = static_cast<DWORD>(sizeof *config + pathBytes);
  machine().lastError = call.fails ? ERROR_ACCESS_DENIED : ERROR_INSUFFICIENT_BUFFER;
  if (call.fails || size < *needed) {
    return FALSE;
  }
  config->lpBinaryPathName = reinterpret_cast<LPWSTR>(config + 1);
  std::memcpy(config->lpBinaryPathName, path.c_str(), pathBytes);
  return TRUE;
}

BOOL CloseServiceHandle(SC_HANDLE) { return noteClosing("CloseServiceHandle") ? TRUE : FALSE; }

HLOCAL LocalAlloc(UINT flags, SIZE_T size) {
  const Call call("LocalAlloc");
  EXPECT_EQ(flags, LMEM_FIXED);
  return call.fails ? nullptr : opened(std::malloc(size));
}

HLOCAL LocalFree(HLOCAL block) {
  noteClosing("LocalFree");
  std::free(block);
  return nullptr;
}

LSTATUS RegOpenKeyExA(HKEY, LPCSTR path, DWORD, REGSAM access, PHKEY key) {
  const Call call("RegOpenKeyExA");
  EXPECT_EQ(access, KEY_READ);
  *key = call.fails ? nullptr : static_cast<HKEY>(opened(&machine().registry.at(path)));
  return call.fails ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
}

LSTATUS RegGetValueA(HKEY key, LPCSTR, LPCSTR name, DWORD flags, LPDWORD, PVOID data,
                     LPDWORD size) {
  const Call call("RegGetValueA");
  EXPECT_EQ(flags, std::string_view(name) == "0" ? RRF_RT_REG_SZ : RRF_RT_REG_BINARY);
  const std::string& bytes = reinterpret_cast<Machine::Key*>(key)->at(name);
  if (data != nullptr) {
    bytes.copy(static_cast<char*>(data), *size);
  }
  *size = static_cast<DWORD>(bytes.size());
  return call.fails ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
}

LSTATUS RegCloseKey(HKEY) {
  return noteClosing("RegCloseKey") ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD size) {
  const Call call("GetEnvironmentVariableW", purpose(buffer));
  const WideString& value = machine().windir;
  if (call.fails || name != WideString(WIDE("windir"))) {
    return 0;
  }
  if (size <= value.size()) {
    return static_cast<DWORD>(value.size()) + 1;
  }
  buffer[value.copy(buffer, size)] = 0;
  return static_cast<DWORD>(value.size());
}

int WideCharToMultiByte(UINT codePage, DWORD, LPCWSTR wide, int, LPSTR bytes, int size, LPCSTR,
                        LPBOOL) {
  const Call call("WideCharToMultiByte");
  EXPECT_EQ(codePage, CP_UTF8);
  const std::string converted = std::filesystem::path(wide).string();
  converted.copy(bytes, static_cast<std::size_t>(size));
  return call.fails ? 0 : static_cast<int>(converted.size()) + 1;
}

// NOLINTEND(readability-non-const-parameter)
