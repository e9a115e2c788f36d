/// Allocations that fail on demand: the test program's `operator new`, and the `malloc` called by
/// the code linked into it.
#pragma once

#include <utility>

/// While it lives, the `nth` allocation fails, counted from 1; none for 0. An inner fault suspends
/// the outer one. Used from one thread.
class AllocationFault {
 public:
  explicit AllocationFault(int nth) : outer_(std::exchange(countdown, nth)) {}
  ~AllocationFault() { countdown = outer_; }
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;

  static bool Happened() { return countdown == 0; }
  /// Without a scope.
  static void FailNext(int nth = 1) { countdown = nth; }
  /// Whether this allocation is to fail.
  static bool IsDue() { return countdown > 0 && --countdown == 0; }

 private:
  static inline int countdown = 0;
  int outer_;
};
