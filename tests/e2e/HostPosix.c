#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "Host.h"

void* HostOpen(const char* path) { return dlopen(path, RTLD_NOW | RTLD_GLOBAL); }

HostFunction HostSymbol(void* module, const char* name) {
  void* const address = dlsym(module, name);
  HostFunction function;
  memcpy(&function, &address, sizeof function);
  return function;
}

void HostClose(void* module) { dlclose(module); }

size_t HostRead(const char* path, char* buffer, size_t capacity) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  size_t length = 0;
  ssize_t part = 0;
  while (file >= 0 && (part = read(file, buffer + length, capacity - length)) > 0) {
    length += (size_t)part;
  }
  close(file);
  return length;
}

void HostAppend(const char* path, const char* text, size_t length) {
  const int file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (write(file, text, length) < 0) {
    _exit(3);
  }
  close(file);
}

typedef struct {
  pthread_barrier_t* barrier;
  void (*task)(void* item);
  void* item;
} Start;

static void* runThread(void* argument) {
  const Start* const start = argument;
  pthread_barrier_wait(start->barrier);
  start->task(start->item);
  return NULL;
}

bool HostRunTogether(size_t count, void (*task)(void* item), void* items, size_t itemSize) {
  pthread_t threads[HOST_MAX_THREADS];
  Start starts[HOST_MAX_THREADS];
  pthread_barrier_t barrier;
  if (count > HOST_MAX_THREADS || pthread_barrier_init(&barrier, NULL, (unsigned)count) != 0) {
    return false;
  }
  for (size_t i = 0; i < count; ++i) {
    starts[i] = (Start){&barrier, task, (char*)items + i * itemSize};
    if (pthread_create(&threads[i], NULL, runThread, &starts[i]) != 0) {
      return false;
    }
  }
  struct timespec limit;
  clock_gettime(CLOCK_REALTIME, &limit);
  limit.tv_sec += 60;
  for (size_t i = 0; i < count; ++i) {
    if (pthread_timedjoin_np(threads[i], NULL, &limit) != 0) {
      return false;
    }
  }
  return pthread_barrier_destroy(&barrier) == 0;
}

HostEnd HostAsk(HostQuery query, uint64_t component, uint64_t key, void* buffer, uint64_t* size,
                uint32_t* status) {
  *status = query(component, key, buffer, size);
  return HOST_RETURNED;
}
