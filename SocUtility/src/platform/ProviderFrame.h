/// The frames in which a provider runs. They see to what may leave its code beside a result, in the
/// system's own way: `windows/ProviderFrame.c` or `linux/ProviderFrame.cpp`. Used by the provider
/// calls and by the provider attempt, from the thread that holds the attempt's mutex.
#pragma once

#include <stdbool.h>
#include <stdint.h>

#include "ZynSystemInfo.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Calls `query` and stores what it returns in `*status`. A C++ exception of the compiler that this
/// library is made with passes through. One of another compiler, which no handler of this library
/// would see, ends here: it is destroyed, and the result is false.
bool CallProvider(Soc_GetCapabilityFn* query, uint64_t component, uint64_t key, void* buffer,
                  uint64_t* size, uint32_t* status);

/// Calls `attempt(context)`, which lets no C++ exception out. When the thread leaves it without
/// returning, since a handler of the program took a hardware fault, `abandon(context)` is called on
/// the way, and what the frames in between own is lost. `abandon` must not throw.
void RunAttempt(void (*attempt)(void* context), void (*abandon)(void* context), void* context);

#ifdef __cplusplus
}
#endif
