/// The provider attempt: for a chip that the catalogue does not know, each query function tries
/// once to import a provider's answers into its record.
#pragma once

#include <atomic>

#include "DynamicSocInfo/ScalarAnswers.h"
#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "platform/WindowsApi.h"

/// Whether a loader has all that an import needs: a known library name and the exports of its kind.
bool IsAcceptedProvider(const ProviderLoader& provider);

/// One query function's attempt. Any thread may use it at any time. The record that it writes may
/// be read by a thread after `MakeOnce` has returned to it.
class ProviderAttempt {
 public:
  /// With `recordConfirmed` the record needs no provider, and no attempt will be made.
  explicit ProviderAttempt(bool recordConfirmed) noexcept : recordConfirmed_(recordConfirmed) {}

  /// Makes the attempt if there is one still to be made; of callers that arrive together one makes
  /// it and the others wait. Returns whether this call made it.
  ///
  /// Throws `std::bad_alloc`, `std::system_error`, and `std::runtime_error` for what came out of
  /// the import, an exception of the provider's included as far as the platform carries one from
  /// library to library. The attempt is then still to be made, and the provider has been unloaded.
  bool MakeOnce(SocInfo& record) { return IsStillToBeMade() && MakeOnceLocked(record); }

  /// Whether the record came from the catalogue or an attempt succeeded.
  bool RecordConfirmed() const noexcept { return recordConfirmed_.load(std::memory_order_acquire); }

  /// Whether the calling thread is inside an attempt of either query function: a provider that is
  /// being asked, and asks back.
  static bool RunsOnThisThread() noexcept {
    const DWORD running = runningThread_.load(std::memory_order_relaxed);
    return running != NO_THREAD && running == GetCurrentThreadId();
  }

  /// Lets warm scalar queries answer from `answers`, which must live on. Does nothing while an
  /// attempt runs, which ends what was settled: a later query is to settle them again.
  static void Settle(const ScalarAnswers& answers);

 private:
  bool IsStillToBeMade() const noexcept {
    return !RecordConfirmed() && !providerAttempted_.load(std::memory_order_acquire);
  }
  bool MakeOnceLocked(SocInfo& record);

  class Running;
  static constexpr DWORD NO_THREAD = 0;

  /// The thread inside an attempt, of which there is at most one. Unlike a thread-local mark it
  /// costs nothing to read while there is none, and no platform allocates for it.
  static inline constinit std::atomic<DWORD> runningThread_{NO_THREAD};

  std::atomic<bool> recordConfirmed_;
  std::atomic<bool> providerAttempted_{false};
};
