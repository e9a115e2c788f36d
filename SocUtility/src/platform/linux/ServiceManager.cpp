// There is no service manager: one that opens and knows no service is what a machine without the
// asked service shows.
#include <cstdlib>

#include "platform/WindowsApi.h"

namespace {

// Only its address matters.
constinit char managerObject = 0;

SC_HANDLE managerHandle() { return reinterpret_cast<SC_HANDLE>(&managerObject); }

}  // namespace

SC_HANDLE OpenSCManagerW(LPCWSTR, LPCWSTR, DWORD) { return managerHandle(); }

SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR, DWORD) {
  SetLastError(manager == managerHandle() ? ERROR_SERVICE_DOES_NOT_EXIST : ERROR_INVALID_HANDLE);
  return nullptr;
}

BOOL QueryServiceConfigW(SC_HANDLE, LPQUERY_SERVICE_CONFIGW, DWORD, LPDWORD) {
  SetLastError(ERROR_INVALID_HANDLE);
  return FALSE;
}

BOOL CloseServiceHandle(SC_HANDLE handle) {
  if (handle != managerHandle()) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  return TRUE;
}

HLOCAL LocalAlloc(UINT flags, SIZE_T size) {
  if (flags != LMEM_FIXED) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const HLOCAL block = std::malloc(size);
  if (block == nullptr) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  }
  return block;
}

HLOCAL LocalFree(HLOCAL block) {
  std::free(block);
  return nullptr;
}
