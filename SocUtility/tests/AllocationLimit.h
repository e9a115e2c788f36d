/// What a test program takes from the heap: by `operator new`, and by the `malloc` called by the
/// code linked into it. For one thread at a time.
#pragma once

#include <cstddef>
#include <utility>

extern std::size_t allocationCount;    ///< Blocks taken so far by `operator new`.
extern std::size_t largestAllocation;  ///< A block of more bytes is refused.

/// While it lives, blocks of more than `largest` bytes are refused, others not.
class AllocationLimit {
 public:
  explicit AllocationLimit(std::size_t largest)
      : outer_(std::exchange(largestAllocation, largest)) {}
  ~AllocationLimit() { largestAllocation = outer_; }
  AllocationLimit(const AllocationLimit&) = delete;
  AllocationLimit& operator=(const AllocationLimit&) = delete;

 private:
  std::size_t outer_;
};
