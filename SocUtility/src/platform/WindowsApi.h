/// The platform seam: every system call of the library is one of the Win32 functions named here.
///
/// On Windows this header is the system's own and nothing stands between. Elsewhere it declares
/// just what the library uses, with the documented Win32 meaning (failure values, last error,
/// ownership), and the linker picks the implementation: `platform/linux/` for real use, a mock for
/// tests.
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
inline constexpr DWORD ERROR_INVALID_FUNCTION = 1;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
inline constexpr DWORD ERROR_ENVVAR_NOT_FOUND = 203;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD ERROR_SERVICE_DOES_NOT_EXIST = 1060;

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

// The thread's last error. Functions that say "sets the last error" store a code there on failure.
DWORD GetLastError();
void SetLastError(DWORD code);

/// The calling thread's number, unique in the system while the thread lives and never 0.
DWORD GetCurrentThreadId();

/// Copies a firmware table. Returns its size in bytes when the buffer is too small (the buffer is
/// then untouched), the number of bytes copied otherwise, or 0 and sets the last error.
UINT GetSystemFirmwareTable(DWORD provider, DWORD tableId, PVOID buffer, DWORD bufferSize);

// Library loader.

/// Loads a library and takes one reference, which `FreeLibrary` drops. A name without a directory
/// is searched for the platform's way. `file` must be null. Null on failure, sets the last error.
HMODULE LoadLibraryExA(LPCSTR name, HANDLE file, DWORD flags);
/// The handle of a loaded module, without a reference (null name: the program itself), or null.
HMODULE GetModuleHandleA(LPCSTR name);
/// Drops one reference. FALSE when the handle is no module's, sets the last error.
BOOL FreeLibrary(HMODULE module);
/// A symbol that the given module itself defines (null module: the program), or null.
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
/// With `GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS`, `name` is an address and the result the module
/// that contains it; a reference is taken unless the flags forbid it. FALSE when there is none.
BOOL GetModuleHandleExA(DWORD flags, LPCSTR name, HMODULE* module);
/// A module's full path, cut and zero-terminated. Returns its length; a cut path returns `size` and
/// sets the last error to `ERROR_INSUFFICIENT_BUFFER`; 0 is a failure.
DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size);
HANDLE GetCurrentProcess();
/// Fills in as many module handles as fit into `size` bytes; `*needed` is the bytes for all of
/// them.
BOOL K32EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, LPDWORD needed);

// Service control manager. Handles are closed with `CloseServiceHandle`.

SC_HANDLE OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access);
SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access);
/// FALSE with `ERROR_INSUFFICIENT_BUFFER` and the size in `*needed` when `size` bytes do not do.
BOOL QueryServiceConfigW(SC_HANDLE service, LPQUERY_SERVICE_CONFIGW config, DWORD size,
                         LPDWORD needed);
BOOL CloseServiceHandle(SC_HANDLE handle);
HLOCAL LocalAlloc(UINT flags, SIZE_T size);
HLOCAL LocalFree(HLOCAL block);

// Registry. These return the error code itself (`ERROR_SUCCESS` is success).

LSTATUS RegOpenKeyExA(HKEY parent, LPCSTR path, DWORD options, REGSAM access, PHKEY key);
/// `*size` is the buffer's size on entry and the value's on return; a null `data` asks for the
/// size. A string's size includes its terminator, which is always there.
LSTATUS RegGetValueA(HKEY key, LPCSTR subKey, LPCSTR value, DWORD flags, LPDWORD type, PVOID data,
                     LPDWORD size);
LSTATUS RegCloseKey(HKEY key);

// Environment and text.

/// Returns the value's length in units without its terminator, or, when `size` units do not do, the
/// units needed with it; 0 when there is no such variable, sets the last error.
DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD size);
/// UTF-16 to UTF-8; a `wideLength` of -1 takes the zero-terminated input with its terminator. With
/// `size` 0 returns the bytes needed. An unpaired surrogate becomes U+FFFD. 0 on failure.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideLength, LPSTR bytes,
                        int size, LPCSTR defaultChar, LPBOOL usedDefaultChar);

// NOLINTEND(bugprone-reserved-identifier,cert-dcl*,performance-no-int-to-ptr)

#endif
