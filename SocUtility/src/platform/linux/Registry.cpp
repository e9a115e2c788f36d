// There is no registry: its root is empty, and since no key opens, no other handle is one.
#include "platform/WindowsApi.h"

namespace {

constexpr LSTATUS FILE_NOT_FOUND = static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
constexpr LSTATUS INVALID_HANDLE = static_cast<LSTATUS>(ERROR_INVALID_HANDLE);

LSTATUS lookUpIn(HKEY key) { return key == HKEY_LOCAL_MACHINE ? FILE_NOT_FOUND : INVALID_HANDLE; }

}  // namespace

LSTATUS RegOpenKeyExA(HKEY parent, LPCSTR, DWORD, REGSAM, PHKEY key) {
  if (key == nullptr) {
    return static_cast<LSTATUS>(ERROR_INVALID_PARAMETER);
  }
  *key = nullptr;
  return lookUpIn(parent);
}

LSTATUS RegGetValueA(HKEY key, LPCSTR, LPCSTR, DWORD, LPDWORD, PVOID, LPDWORD) {
  return lookUpIn(key);
}

LSTATUS RegCloseKey(HKEY) { return INVALID_HANDLE; }
