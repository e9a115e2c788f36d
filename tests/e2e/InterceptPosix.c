/* With glibc, the program's own allocation functions, which the libraries that it loads call too.
 * A sanitizer replaces them with its own; then none is counted or made to fail. */
#define _GNU_SOURCE
#include <dirent.h>
#include <errno.h>
#include <stdatomic.h>

#include "Host.h"

static bool failed;
static atomic_uint_fast64_t blocks;

#if defined(ALLOCATIONS_ARE_OURS)
static uint64_t left;

#define REPLACES __attribute__((visibility("default")))

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

static bool isToFail(void) {
  if (left == 0 || --left != 0) {
    return false;
  }
  failed = true;
  errno = ENOMEM;
  return true;
}

static void* counted(void* block) {
  blocks += block != NULL;
  return block;
}

REPLACES void* malloc(size_t size) { return isToFail() ? NULL : counted(__libc_malloc(size)); }

REPLACES void* calloc(size_t count, size_t size) {
  return isToFail() ? NULL : counted(__libc_calloc(count, size));
}

REPLACES void* realloc(void* block, size_t size) {
  if (isToFail()) {
    return NULL;
  }
  return block == NULL ? counted(__libc_malloc(size)) : __libc_realloc(block, size);
}

REPLACES void free(void* block) {
  blocks -= block != NULL;
  __libc_free(block);
}
#endif

void HostIntercept(void* product) { (void)product; }

bool HostFailAllocation(uint64_t n) {
  failed = false;
#if defined(ALLOCATIONS_ARE_OURS)
  left = n;
  return true;
#else
  (void)n;
  return false;
#endif
}

bool HostAllocationFailed(void) {
#if defined(ALLOCATIONS_ARE_OURS)
  left = 0;
#endif
  return failed;
}

HostUse HostMeasure(void) {
  HostUse use = {0, blocks};
  DIR* const files = opendir("/proc/self/fd");
  while (files != NULL && readdir(files) != NULL) {
    ++use.handles;
  }
  closedir(files);
  return use;
}
