/* On Windows a library calls other ones through its table of imports. The client writes its own
 * functions into that table. */
#include <stdlib.h>
#include <string.h>
#include <windows.h>

#include "Host.h"

static uint64_t left;
static bool failed;

static bool isToFail(void) {
  if (left == 0 || --left != 0) {
    return false;
  }
  failed = true;
  return true;
}

static void* failingMalloc(size_t size) { return isToFail() ? NULL : malloc(size); }

static void* failingCalloc(size_t count, size_t size) {
  return isToFail() ? NULL : calloc(count, size);
}

static void* failingRealloc(void* block, size_t size) {
  return isToFail() ? NULL : realloc(block, size);
}

static HLOCAL WINAPI failingLocalAlloc(UINT flags, SIZE_T size) {
  return isToFail() ? NULL : LocalAlloc(flags, size);
}

/* A table's identifier is its signature, which names its file. */
static UINT WINAPI shownFirmwareTable(DWORD provider, DWORD table, PVOID buffer, DWORD size) {
  static char content[1 << 16];
  char path[] = "firmware\\....";
  memcpy(strchr(path, '.'), &table, sizeof table);
  const DWORD length = (DWORD)HostRead(path, content, sizeof content);
  if (length == 0) {
    return GetSystemFirmwareTable(provider, table, buffer, size);
  }
  if (length <= size) {
    memcpy(buffer, content, length);
  }
  return length;
}

typedef void (*Function)(void);

static const struct {
  const char* name;
  Function replacement;
} REPLACED[] = {
    {"malloc", (Function)failingMalloc},
    {"calloc", (Function)failingCalloc},
    {"realloc", (Function)failingRealloc},
    {"LocalAlloc", (Function)failingLocalAlloc},
    {"GetSystemFirmwareTable", (Function)shownFirmwareTable},
};

static void replace(const char* name, ULONGLONG* address) {
  DWORD protection;
  for (size_t i = 0; i < sizeof REPLACED / sizeof REPLACED[0]; ++i) {
    if (strcmp(name, REPLACED[i].name) == 0 &&
        VirtualProtect(address, sizeof *address, PAGE_READWRITE, &protection)) {
      *address = (ULONGLONG)(uintptr_t)REPLACED[i].replacement;
      VirtualProtect(address, sizeof *address, protection, &protection);
    }
  }
}

void HostIntercept(void* product) {
  char* const image = product;
  const IMAGE_NT_HEADERS64* const header =
      (const void*)(image + ((const IMAGE_DOS_HEADER*)product)->e_lfanew);
  const DWORD imports =
      header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (const IMAGE_IMPORT_DESCRIPTOR* library = (const void*)(image + imports);
       library->FirstThunk != 0; ++library) {
    const ULONGLONG* names = (const void*)(image + library->OriginalFirstThunk);
    ULONGLONG* addresses = (void*)(image + library->FirstThunk);
    for (; *names != 0; ++names, ++addresses) {
      if (!IMAGE_SNAP_BY_ORDINAL64(*names)) {
        replace(((const IMAGE_IMPORT_BY_NAME*)(const void*)(image + *names))->Name, addresses);
      }
    }
  }
}

bool HostFailAllocation(uint64_t n) {
  failed = false;
  left = n;
  return true;
}

bool HostAllocationFailed(void) {
  left = 0;
  return failed;
}

HostUse HostMeasure(void) {
  HostUse use = {0, 0};
  /* By trial, since not every system that runs these images counts a process's handles itself. */
  for (uintptr_t handle = 4; handle < 0x8000; handle += 4) {
    DWORD flags;
    use.handles += GetHandleInformation((HANDLE)handle, &flags) ? 1 : 0;
  }
  HANDLE heaps[64];
  const DWORD count = GetProcessHeaps(64, heaps);
  for (DWORD i = 0; i < count && i < 64; ++i) {
    PROCESS_HEAP_ENTRY entry = {0};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry)) {
      use.blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    }
    HeapUnlock(heaps[i]);
  }
  return use;
}
