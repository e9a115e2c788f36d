/* Where allocations cannot be made to fail: on Windows a library has its own allocation functions,
 * and a sanitizer puts its own in everybody's place. */
#include "Host.h"

bool HostFailAllocation(uint64_t n) {
  (void)n;
  return false;
}

bool HostAllocationFailed(void) { return false; }
