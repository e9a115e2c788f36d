#include <windows.h>

#include "Host.h"

void* HostOpen(const char* path) { return LoadLibraryA(path); }

HostFunction HostSymbol(void* module, const char* name) {
  return (HostFunction)(void (*)(void))GetProcAddress(module, name);
}

void HostClose(void* module) { FreeLibrary(module); }

size_t HostRead(const char* path, char* buffer, size_t capacity) {
  const HANDLE file =
      CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, 0, NULL);
  DWORD length = 0;
  if (file == INVALID_HANDLE_VALUE || !ReadFile(file, buffer, (DWORD)capacity, &length, NULL)) {
    length = 0;
  }
  CloseHandle(file);
  return length;
}

void HostAppend(const char* path, const char* text, size_t length) {
  const HANDLE file =
      CreateFileA(path, FILE_APPEND_DATA, FILE_SHARE_READ, NULL, OPEN_ALWAYS, 0, NULL);
  DWORD written = 0;
  if (!WriteFile(file, text, (DWORD)length, &written, NULL)) {
    ExitProcess(3);
  }
  CloseHandle(file);
}

typedef struct {
  HANDLE gate;
  void (*task)(void* item);
  void* item;
} Start;

static DWORD WINAPI runThread(void* argument) {
  const Start* const start = argument;
  WaitForSingleObject(start->gate, INFINITE);
  start->task(start->item);
  return 0;
}

bool HostRunTogether(size_t count, void (*task)(void* item), void* items, size_t itemSize) {
  HANDLE threads[HOST_MAX_THREADS];
  Start starts[HOST_MAX_THREADS];
  const HANDLE gate = CreateEventA(NULL, TRUE, FALSE, NULL);
  if (count > HOST_MAX_THREADS || gate == NULL) {
    return false;
  }
  for (size_t i = 0; i < count; ++i) {
    starts[i] = (Start){gate, task, (char*)items + i * itemSize};
    threads[i] = CreateThread(NULL, 0, runThread, &starts[i], 0, NULL);
    if (threads[i] == NULL) {
      return false;
    }
  }
  SetEvent(gate);
  for (size_t i = 0; i < count; ++i) {
    if (WaitForSingleObject(threads[i], 60 * 1000) != WAIT_OBJECT_0) {
      return false;
    }
    CloseHandle(threads[i]);
  }
  CloseHandle(gate);
  return true;
}
