#include <unistd.h>

#include "platform/WindowsApi.h"

DWORD GetCurrentThreadId() { return static_cast<DWORD>(gettid()); }
