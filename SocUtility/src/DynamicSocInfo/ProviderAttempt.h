/// The provider attempt. A chip outside the catalogue is described by a provider library, if there
/// is one: each query function tries once to import its answers.
#pragma once

#include <atomic>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

/// Whether a loader has all that an import needs: a known library name and the exports of its kind.
bool IsAcceptedProvider(const ProviderLoader& provider);

/// One query function's attempt. Any thread may use it at any time. The record that it writes may
/// be read by a thread after `EnsureAttempted` has returned to it.
class ProviderAttempt {
 public:
  /// With `recordConfirmed` the record needs no provider, and no attempt will be made.
  explicit ProviderAttempt(bool recordConfirmed) noexcept : recordConfirmed_(recordConfirmed) {}

  /// Makes the attempt unless it was made or is not needed. Of callers that arrive together one
  /// makes it and the others wait. Returns whether this call made it.
  ///
  /// Throws `std::system_error`, and `std::runtime_error` when the import failed (an exception of
  /// the provider, or no memory) or when a provider calls this on the thread that is asking it. The
  /// attempt can then be made by a later call, and the provider has been unloaded.
  ///
  /// After a hardware fault in the provider that the program handles, the attempt counts as made
  /// without success, and the provider stays loaded.
  bool EnsureAttempted(SocInfo& record) { return IsNeeded() && AttemptLocked(record); }

  /// Whether the record came from the catalogue or an attempt succeeded.
  bool RecordConfirmed() const noexcept { return recordConfirmed_.load(std::memory_order_acquire); }

 private:
  bool IsNeeded() const noexcept {
    return !RecordConfirmed() && !providerAttempted_.load(std::memory_order_acquire);
  }
  bool AttemptLocked(SocInfo& record);

  std::atomic<bool> recordConfirmed_;
  std::atomic<bool> providerAttempted_{false};
};
