#include <unistd.h>

#include "platform/WindowsApi.h"

namespace {

constinit thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace

DWORD GetLastError() { return lastError; }

void SetLastError(DWORD code) { lastError = code; }

DWORD GetCurrentThreadId() { return static_cast<DWORD>(gettid()); }
