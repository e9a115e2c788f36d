// The functions of Windows' services, registry and UTF-16 text. Linux has none of these. Opening
// the service manager or a key fails, so the library never calls the other functions.
#include "platform/WindowsApi.h"

SC_HANDLE OpenSCManagerW(LPCWSTR, LPCWSTR, DWORD) { return nullptr; }
SC_HANDLE OpenServiceW(SC_HANDLE, LPCWSTR, DWORD) { return nullptr; }
BOOL QueryServiceConfigW(SC_HANDLE, LPQUERY_SERVICE_CONFIGW, DWORD, LPDWORD) { return FALSE; }
BOOL CloseServiceHandle(SC_HANDLE) { return FALSE; }
HLOCAL LocalAlloc(UINT, SIZE_T) { return nullptr; }
HLOCAL LocalFree(HLOCAL block) { return block; }

LSTATUS RegOpenKeyExA(HKEY, LPCSTR, DWORD, REGSAM, PHKEY) { return ERROR_FILE_NOT_FOUND; }
LSTATUS RegGetValueA(HKEY, LPCSTR, LPCSTR, DWORD, LPDWORD, PVOID, LPDWORD) {
  return ERROR_INVALID_HANDLE;
}
LSTATUS RegCloseKey(HKEY) { return ERROR_INVALID_HANDLE; }

DWORD GetEnvironmentVariableW(LPCWSTR, LPWSTR, DWORD) { return 0; }
int WideCharToMultiByte(UINT, DWORD, LPCWSTR, int, LPSTR, int, LPCSTR, LPBOOL) { return 0; }
