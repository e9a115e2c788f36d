// On Windows a library calls other ones through its table of imports. The client writes its own
// functions into that table.
#include <windows.h>

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "Host.h"

const bool HOST_SEES_ALLOCATIONS = true;

namespace {

void* failingMalloc(size_t size) { return IsAllocationToFail() ? nullptr : malloc(size); }

void* failingAlignedMalloc(size_t size, size_t alignment) {
  return IsAllocationToFail() ? nullptr : _aligned_malloc(size, alignment);
}

// A table's identifier is its signature, which names its file.
UINT WINAPI shownFirmwareTable(DWORD provider, DWORD table, PVOID buffer, DWORD size) {
  const std::string signature(reinterpret_cast<const char*>(&table), sizeof table);
  std::ifstream file("firmware\\" + signature, std::ios::binary);
  if (!file) {
    return GetSystemFirmwareTable(provider, table, buffer, size);
  }
  const std::string content(std::istreambuf_iterator<char>(file), {});
  if (content.size() <= size) {
    std::copy(content.begin(), content.end(), static_cast<char*>(buffer));
  }
  return static_cast<UINT>(content.size());
}

const struct {
  const char* name;
  void* replacement;
} REPLACED[] = {
    {"malloc", reinterpret_cast<void*>(failingMalloc)},
    {"_aligned_malloc", reinterpret_cast<void*>(failingAlignedMalloc)},
    {"GetSystemFirmwareTable", reinterpret_cast<void*>(shownFirmwareTable)},
};

void replace(const char* name, void** address) {
  DWORD protection = 0;
  for (const auto& function : REPLACED) {
    if (std::strcmp(name, function.name) == 0 &&
        VirtualProtect(address, sizeof *address, PAGE_READWRITE, &protection)) {
      *address = function.replacement;
      VirtualProtect(address, sizeof *address, protection, &protection);
    }
  }
}

}  // namespace

void HostIntercept(void* product) {
  char* const image = static_cast<char*>(product);
  const auto* const start = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
  const auto* const header = reinterpret_cast<const IMAGE_NT_HEADERS64*>(image + start->e_lfanew);
  const DWORD imports =
      header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + imports);
       library->FirstThunk != 0; ++library) {
    const auto* name = reinterpret_cast<const ULONGLONG*>(image + library->OriginalFirstThunk);
    auto* address = reinterpret_cast<void**>(image + library->FirstThunk);
    for (; *name != 0; ++name, ++address) {  // none is imported by a number
      replace(reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(image + *name)->Name, address);
    }
  }
}

HostUse HostMeasure() {
  HostUse use = {0, 0};
  // By trial, since not every system that runs these images counts a process's handles itself.
  for (uintptr_t handle = 4; handle < 0x8000; handle += 4) {
    DWORD flags = 0;
    use.handles += GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags) ? 1 : 0;
  }
  HANDLE heaps[64];
  const DWORD count = std::min<DWORD>(GetProcessHeaps(64, heaps), 64);
  for (const HANDLE* heap = heaps; heap != heaps + count; ++heap) {
    PROCESS_HEAP_ENTRY entry = {};
    HeapLock(*heap);
    while (HeapWalk(*heap, &entry)) {
      use.blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) == 0 ? 0 : 1;
    }
    HeapUnlock(*heap);
  }
  return use;
}
