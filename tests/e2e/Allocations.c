/* With glibc, the program's own allocation functions, which the libraries that it loads call too.
 * Elsewhere none can be made to fail: on Windows a library has its own allocation functions, and a
 * sanitizer puts its own in everybody's place. */
#include <errno.h>

#include "Host.h"

static bool failed;

#if defined(ALLOCATIONS_CAN_FAIL)
static uint64_t left;

#define REPLACES __attribute__((visibility("default")))

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

static bool isToFail(void) {
  if (left == 0 || --left != 0) {
    return false;
  }
  failed = true;
  errno = ENOMEM;
  return true;
}

REPLACES void* malloc(size_t size) { return isToFail() ? NULL : __libc_malloc(size); }

REPLACES void* calloc(size_t count, size_t size) {
  return isToFail() ? NULL : __libc_calloc(count, size);
}

REPLACES void* realloc(void* block, size_t size) {
  return isToFail() ? NULL : __libc_realloc(block, size);
}
#endif

bool HostFailAllocation(uint64_t n) {
  failed = false;
#if defined(ALLOCATIONS_CAN_FAIL)
  left = n;
  return true;
#else
  (void)n;
  return false;
#endif
}

bool HostAllocationFailed(void) {
#if defined(ALLOCATIONS_CAN_FAIL)
  left = 0;
#endif
  return failed;
}
