/// Allocations that fail on demand: the test program's `operator new`, or the `malloc` called by
/// the code linked into it.
#pragma once

/// While it lives, the `nth` allocation of its kind fails, counted from 1. One at a time, used from
/// one thread.
class AllocationFault {
 public:
  enum Kind { NONE, NEW, MALLOC };

  AllocationFault(Kind kind, int nth);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;

  bool Happened() const;

  /// Allocations of the mocked platform itself neither count nor fail.
  struct Pause {
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
  };
};
