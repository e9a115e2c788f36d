/* What the client and the test provider need of the system that they run on. One implementation is
 * linked, HostPosix.c or HostWindows.c. No variadic stdio, and no memory from the heap in what the
 * provider calls: it runs while allocations are made to fail. */
#ifndef HOST_H
#define HOST_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

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
 * Returns when all have ended; false when not all could be started. At most
 * HOST_MAX_THREADS. */
bool HostRunTogether(size_t count, void (*task)(void* item), void* items, size_t itemSize);

typedef struct {
  uint64_t handles; /* open files, or whatever the system calls a handle */
  uint64_t bytes;   /* memory taken from the heap, or private to the process */
} HostUse;
HostUse HostMeasure(void);

/* Lets the n-th allocation from now on fail, once; false where that cannot be done. */
bool HostFailAllocation(uint64_t n);
/* Ends that; whether the allocation was reached and failed. */
bool HostAllocationFailed(void);

#endif
