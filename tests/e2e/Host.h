/* What the client and the test provider need of the system that they run on. One implementation is
 * linked, the files ending in Posix or in Windows. No variadic stdio, and no memory from the heap
 * in what the provider calls: it runs while allocations are made to fail. */
#ifndef HOST_H
#define HOST_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { HOST_MAX_THREADS = 64 };

typedef void (*HostFunction)(void);

/* Loads a library, or takes one more reference to it; its symbols are open to the whole process.
 * Null when it cannot be loaded. */
void* HostOpen(const char* path);
/* The function that a library exports, or null. */
HostFunction HostSymbol(void* module, const char* name);
void HostClose(void* module);

/* Reads a file's first `capacity` bytes; returns how many there were, 0 without a file. */
size_t HostRead(const char* path, char* buffer, size_t capacity);
/* Adds to the end of a file, which need not exist. */
void HostAppend(const char* path, const char* text, size_t length);

/* Runs `task` on each of `count` items, each on a thread of its own, all let go at the same moment.
 * Returns when all have ended; false when not all could be started, or one does not end in a
 * minute. At most HOST_MAX_THREADS. */
bool HostRunTogether(size_t count, void (*task)(void* item), void* items, size_t itemSize);

typedef uint32_t (*HostQuery)(uint64_t component, uint64_t key, void* buffer, uint64_t* size);
typedef enum { HOST_RETURNED, HOST_THREW, HOST_FAULTED } HostEnd;

/* Asks the product from code of another compiler where there is one, and handles what comes out of
 * the call: a C++ exception, or a hardware fault. Only a call that returned sets `*status`. */
HostEnd HostAsk(HostQuery query, uint64_t component, uint64_t key, void* buffer, uint64_t* size,
                uint32_t* status);

typedef struct {
  uint64_t handles; /* open files, or whatever the system calls a handle */
  uint64_t blocks;  /* allocated blocks of the heap; 0 where they cannot be counted */
} HostUse;
HostUse HostMeasure(void);

/* Comes between the product, which was just loaded, and what it calls, as far as the functions
 * below need it. On Windows the product is also shown the firmware tables in the folder firmware,
 * when there is one. */
void HostIntercept(void* product);

/* Lets the n-th allocation from now on fail, once; false where that cannot be done. */
bool HostFailAllocation(uint64_t n);
/* Ends that; whether the allocation was reached and failed. */
bool HostAllocationFailed(void);

#ifdef __cplusplus
}
#endif

#endif
