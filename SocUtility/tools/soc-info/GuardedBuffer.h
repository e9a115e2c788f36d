/// A buffer for one call of a provider that shows writes past either end.
///
/// Its memory, from low to high addresses:
///
///     closed page | known bytes | the buffer | guard, closed | closed page
///
/// The buffer ends exactly where the guard begins. So it is only as aligned as its size: a buffer
/// of 12 bytes begins at a multiple of 4, one of an odd size at an odd address.
///
/// The first access to the guard opens it, and the call goes on. Afterwards the guard's bytes show
/// what was written. An access to the closed pages ends the process like any other fault.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Told of an access to closed memory, before the process goes on or crashes. `offered` is the
/// buffer's size in bytes. `offset` is the distance in bytes from the buffer's beginning: `offered`
/// or more, or negative. It belongs to the first access, which need not be the lowest one.
///
/// Runs during the fault, on the thread that caused it. May do only what a signal handler may.
using OutsideAccess = void(std::size_t offered, std::ptrdiff_t offset);

/// Handles memory faults from now on. Call this once, on the thread that calls the provider. All
/// other faults are left to the handlers from before. `report` may be null.
void WatchGuardedBuffers(OutsideAccess* report);

/// Only one may exist at a time.
class GuardedBuffer {
 public:
  /// The bytes are zero. Throws `std::bad_alloc`.
  explicit GuardedBuffer(std::size_t size);
  ~GuardedBuffer();
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  /// The buffer. Its address is valid also if the size is 0.
  std::span<std::uint8_t> Bytes() const { return bytes_; }

  /// How far before the buffer bytes were changed; 0 if none were.
  std::size_t BytesWrittenBefore() const;

  /// How far after the buffer bytes were changed; 0 if none were. Opens the guard.
  std::size_t BytesWrittenAfter() const;

  /// For the handler of faults: reports an access to closed memory of this buffer, and opens the
  /// guard if it was there. Returns whether the access can be repeated.
  bool HandleFault(std::uintptr_t address) const;

 private:
  using Memory = std::span<std::uint8_t>;

  Memory memory_;
  Memory before_;
  Memory bytes_;
  Memory guard_;
};
