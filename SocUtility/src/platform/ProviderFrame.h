/// The frames in which a provider runs. They handle exceptions and hardware faults that leave its
/// code, per system: `windows/ProviderFrame.c` or `linux/ProviderFrame.cpp`. Used by the provider
/// calls and the provider attempt, on the thread that holds the attempt's mutex.
#pragma once

#include <stdbool.h>
#include <stdint.h>

#include "ZynSystemInfo.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Calls `query` and stores its result in `*status`. A C++ exception of this library's compiler
/// passes through. An exception of another compiler, which no handler of this library can catch,
/// ends here: it is destroyed, and the function returns false.
bool CallProvider(Soc_GetCapabilityFn* query, uint64_t component, uint64_t key, void* buffer,
                  uint64_t* size, uint32_t* status);

/// Calls `attempt(context)`, which must not throw.
///
/// On Windows a handler of the program can take a hardware fault in the provider. Then the thread
/// leaves `attempt` without returning. `abandon(context)`, which must not throw, is called on the
/// way. No destructor runs, so memory owned by the frames in between leaks. On other systems
/// `abandon` is never called.
void RunAttempt(void (*attempt)(void* context), void (*abandon)(void* context), void* context);

#ifdef __cplusplus
}
#endif
