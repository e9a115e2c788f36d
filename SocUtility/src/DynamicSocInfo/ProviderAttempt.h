/// The provider attempt. For a chip that is not in the catalogue, each query function makes one: it
/// loads a provider library, if there is one, and imports its answers.
#pragma once

#include <atomic>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

/// Whether the loaded provider can be imported from: its file name is known, and it has all exports
/// of its kind.
bool IsAcceptedProvider(const ProviderLoader& provider);

/// One query function's attempt. Any thread may use it at any time. A thread may read the record
/// only after its own call of `EnsureAttempted` has returned.
class ProviderAttempt {
 public:
  /// With `recordConfirmed` the record needs no provider, and no attempt is made.
  explicit ProviderAttempt(bool recordConfirmed) noexcept : recordConfirmed_(recordConfirmed) {}

  /// Makes the attempt if it is needed and was not made yet. If several threads call, one makes the
  /// attempt and the others wait. Returns whether this call made it.
  ///
  /// Throws `std::runtime_error` in two cases:
  /// - An exception ended the import: the provider threw, or memory ran out. The provider has been
  ///   unloaded, and the next call makes the attempt again.
  /// - An attempt is needed, and a provider made this call on the thread that is asking it.
  ///
  /// Throws `std::system_error` if the mutex cannot be locked.
  ///
  /// On Windows a program can handle a hardware fault in the provider and go on. The attempt then
  /// counts as made, the import is incomplete, and the provider stays loaded.
  bool EnsureAttempted(SocInfo& record) { return IsNeeded() && AttemptUnderLock(record); }

  /// Whether the record is confirmed: it came from the catalogue, or an import succeeded.
  bool RecordConfirmed() const noexcept { return recordConfirmed_.load(std::memory_order_acquire); }

 private:
  bool IsNeeded() const noexcept {
    return !RecordConfirmed() && !providerAttempted_.load(std::memory_order_acquire);
  }
  bool AttemptUnderLock(SocInfo& record);

  std::atomic<bool> recordConfirmed_;
  std::atomic<bool> providerAttempted_{false};
};
