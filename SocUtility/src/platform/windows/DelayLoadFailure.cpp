// ADVAPI32 is loaded by the first call of one of its functions. When that fails, the service
// manager and the registry key cannot be opened, as if neither existed. Without this hook a failed
// load would raise an exception.
#include <cstring>

#include "platform/WindowsApi.h"

// clang-format off
#include <delayimp.h>  // relies on the system's types
// clang-format on

extern "C" IMAGE_DOS_HEADER __ImageBase;  // NOLINT: the linker's name

namespace {

SC_HANDLE WINAPI openNoServiceManager(LPCWSTR /*machine*/, LPCWSTR /*database*/, DWORD /*access*/) {
  SetLastError(ERROR_MOD_NOT_FOUND);
  return nullptr;
}

LSTATUS WINAPI openNoKey(HKEY /*parent*/, LPCSTR /*path*/, DWORD /*options*/, REGSAM /*access*/,
                         PHKEY /*key*/) {
  return ERROR_MOD_NOT_FOUND;
}

template <class Function>
FARPROC addressOf(Function* function) {
  return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

FARPROC WINAPI replaceWhatIsMissing(unsigned event, PDelayLoadInfo load) {
  if (event == dliFailLoadLib) {
    return reinterpret_cast<FARPROC>(&__ImageBase);  // any module without the functions
  }
  if (std::strcmp(load->dlp.szProcName, "OpenSCManagerW") == 0) {
    return addressOf(openNoServiceManager);
  }
  if (std::strcmp(load->dlp.szProcName, "RegOpenKeyExA") == 0) {
    return addressOf(openNoKey);
  }
  return nullptr;  // needs what one of the two opened
}

}  // namespace

extern "C" decltype(__pfnDliFailureHook2) __pfnDliFailureHook2 = replaceWhatIsMissing;
