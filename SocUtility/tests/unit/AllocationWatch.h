/// What this program takes from the heap by `operator new`.
#pragma once

#include <cstddef>

extern std::size_t allocationCount;    ///< Blocks taken so far.
extern std::size_t largestAllocation;  ///< A block of more bytes is refused with `std::bad_alloc`.
