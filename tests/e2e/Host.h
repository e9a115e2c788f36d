// What the client needs of the system that it runs on. HostPosix.cpp or HostWindows.cpp is linked.
#pragma once

#include <stdint.h>

extern "C" {

/// A call of one of the product's queries.
struct HostCall {
  uint32_t (*query)(uint64_t component, uint64_t key, void* buffer, uint64_t* size);
  uint64_t component;
  uint64_t key;
  void* buffer;
  uint64_t size;
  uint32_t status;
  const char* end;  ///< " threw" or " faulted", or empty when the query returned
};

/// Makes the call from code of another compiler where there is one, and handles what comes out of
/// it: a C++ exception, or a hardware fault.
void HostAsk(HostCall* call);

struct HostUse {
  uint64_t handles;  ///< open files, or whatever the system calls a handle
  uint64_t blocks;   ///< allocated blocks of the heap; 0 where they cannot be counted
};
HostUse HostMeasure();

/// Replaces the memory functions that the product calls, which was just loaded. On Windows the
/// product is also shown the firmware tables in the folder firmware, when there is one.
void HostIntercept(void* product);

/// Whether the product's allocations ask `IsAllocationToFail`. With a sanitizer they do not.
extern const bool HOST_SEES_ALLOCATIONS;
/// The client's. Whether the allocation that is being made fails.
bool IsAllocationToFail();
}
