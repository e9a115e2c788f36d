/// The system calls of the library: Win32 functions, called by their own names.
///
/// On Windows this header includes the system's headers. Elsewhere it declares only what the
/// library and its tool use, with the documented Win32 meaning. The linker picks the
/// implementation: `platform/linux/` in programs, a mock in some tests. `platform/linux/` ignores
/// an argument if the library always passes the same value. It sets the last error only where a
/// caller reads it.
#pragma once

#ifdef _WIN32

#ifndef NOMINMAX  // the compiler's own headers may have defined it
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
// clang-format off
#include <windows.h>  // first: the others rely on its types
#include <psapi.h>
#include <winsvc.h>
// clang-format on

/// A wide string literal of `WCHAR` units.
#define WIDE(text) L##text

#else

#include <cstddef>
#include <cstdint>

/// A wide string literal of `WCHAR` units.
#define WIDE(text) u##text

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*,performance-no-int-to-ptr): Win32 names and
// values.

using BOOL = int;
using BYTE = std::uint8_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using LONG = std::int32_t;
using LSTATUS = LONG;
using REGSAM = DWORD;
using SIZE_T = std::size_t;
using CHAR = char;
using WCHAR = char16_t;  ///< One UTF-16 unit on every platform.
using LPSTR = CHAR*;
using LPCSTR = const CHAR*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPDWORD = DWORD*;
using LPBOOL = BOOL*;
using PVOID = void*;
using HANDLE = void*;
using HLOCAL = void*;
using HMODULE = struct HMODULE__*;
using HKEY = struct HKEY__*;
using PHKEY = HKEY*;
using SC_HANDLE = struct SC_HANDLE__*;
using FARPROC = std::intptr_t (*)();

struct QUERY_SERVICE_CONFIGW {
  DWORD dwServiceType;
  DWORD dwStartType;
  DWORD dwErrorControl;
  LPWSTR lpBinaryPathName;
  LPWSTR lpLoadOrderGroup;
  DWORD dwTagId;
  LPWSTR lpDependencies;
  LPWSTR lpServiceStartName;
  LPWSTR lpDisplayName;
};
using LPQUERY_SERVICE_CONFIGW = QUERY_SERVICE_CONFIGW*;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr DWORD MAX_PATH = 260;

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;

inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 0x8;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 0x2;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 0x4;

inline constexpr DWORD STANDARD_RIGHTS_READ = 0x20000;
inline constexpr DWORD SERVICE_QUERY_CONFIG = 0x1;
inline constexpr UINT LMEM_FIXED = 0;

inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr DWORD RRF_RT_REG_SZ = 0x2;
inline constexpr DWORD RRF_RT_REG_BINARY = 0x8;
/// The predefined root key; its value is the one Windows gives it.
inline const HKEY HKEY_LOCAL_MACHINE =
    reinterpret_cast<HKEY>(static_cast<std::intptr_t>(static_cast<LONG>(0x80000002)));

inline constexpr UINT CP_UTF8 = 65001;

/// The thread's last error: why its latest failed call failed.
DWORD GetLastError();
void SetLastError(DWORD code);

/// The calling thread's number. No other thread of the system has it at the same time; never 0.
DWORD GetCurrentThreadId();

/// Copies a firmware table and returns the number of bytes copied. If the buffer is too small,
/// copies nothing and returns the table's size in bytes. On failure returns 0 and sets the last
/// error.
UINT GetSystemFirmwareTable(DWORD provider, DWORD tableId, PVOID buffer, DWORD bufferSize);

// Library loader.

/// Loads a library and takes one reference, which `FreeLibrary` drops. The platform searches for a
/// name without a directory. Null on failure.
HMODULE LoadLibraryExA(LPCSTR name, HANDLE file, DWORD flags);
/// The handle of a loaded module, without a reference, or null.
HMODULE GetModuleHandleA(LPCSTR name);
/// Drops one reference. FALSE on failure.
BOOL FreeLibrary(HMODULE module);
/// A symbol that the module itself defines, or null. The null module is the program.
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
/// The module that contains the address passed as `name`, without a reference. `flags` must be both
/// flags above. FALSE if there is none.
BOOL GetModuleHandleExA(DWORD flags, LPCSTR name, HMODULE* module);
/// A module's absolute path with its terminator. Returns the length; 0 on failure. A path that does
/// not fit is cut: returns `size` and sets the last error to `ERROR_INSUFFICIENT_BUFFER`.
DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size);
HANDLE GetCurrentProcess();
/// Copies as many module handles as fit into `size` bytes; `*needed` is the size of all of them.
BOOL K32EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, LPDWORD needed);

// Only Windows has services, a registry and UTF-16 text: elsewhere all of these fail.

SC_HANDLE OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access);
SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access);
BOOL QueryServiceConfigW(SC_HANDLE service, LPQUERY_SERVICE_CONFIGW config, DWORD size,
                         LPDWORD needed);
BOOL CloseServiceHandle(SC_HANDLE handle);
HLOCAL LocalAlloc(UINT flags, SIZE_T size);
HLOCAL LocalFree(HLOCAL block);
LSTATUS RegOpenKeyExA(HKEY parent, LPCSTR path, DWORD options, REGSAM access, PHKEY key);
LSTATUS RegGetValueA(HKEY key, LPCSTR subKey, LPCSTR value, DWORD flags, LPDWORD type, PVOID data,
                     LPDWORD size);
LSTATUS RegCloseKey(HKEY key);
DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD size);
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideLength, LPSTR bytes,
                        int size, LPCSTR defaultChar, LPBOOL usedDefaultChar);

// NOLINTEND(bugprone-reserved-identifier,cert-dcl*,performance-no-int-to-ptr)

#endif
