/// The provider attempt. For a chip that is not in the catalogue, each query function makes one: it
/// loads a provider library, if there is one, and imports its answers.
#pragma once

#include <atomic>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

/// Whether a loader has what an import needs: a known library name and the exports of its kind.
bool IsAcceptedProvider(const ProviderLoader& provider);

/// One query function's attempt. Any thread may use it at any time. The record that it writes may
/// be read by a thread after `EnsureAttempted` has returned to it.
class ProviderAttempt {
 public:
  /// With `recordConfirmed` the record needs no provider, and no attempt is made.
  explicit ProviderAttempt(bool recordConfirmed) noexcept : recordConfirmed_(recordConfirmed) {}

  /// Makes the attempt unless it was made or is not needed. If several threads call, one makes it
  /// and the others wait. Returns whether this call made it.
  ///
  /// Throws `std::runtime_error` when an exception ended the import (the provider threw, or memory
  /// ran out): the provider has been unloaded, and the next call makes the attempt again. Throws it
  /// too when a provider calls this on the thread that is asking it, and an attempt is needed.
  /// Throws `std::system_error`.
  ///
  /// On Windows a program can handle a hardware fault in the provider and go on. Then the attempt
  /// is over, without success, and the provider stays loaded.
  bool EnsureAttempted(SocInfo& record) { return IsNeeded() && AttemptUnderLock(record); }

  /// Whether the record came from the catalogue or an attempt succeeded.
  bool RecordConfirmed() const noexcept { return recordConfirmed_.load(std::memory_order_acquire); }

 private:
  bool IsNeeded() const noexcept {
    return !RecordConfirmed() && !providerAttempted_.load(std::memory_order_acquire);
  }
  bool AttemptUnderLock(SocInfo& record);

  std::atomic<bool> recordConfirmed_;
  std::atomic<bool> providerAttempted_{false};
};
