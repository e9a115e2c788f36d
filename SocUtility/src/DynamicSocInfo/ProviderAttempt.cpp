#include "DynamicSocInfo/ProviderAttempt.h"

#include <mutex>
#include <stdexcept>

#include "DynamicSocInfo/import/ProviderImport.h"
#include "platform/ProviderFrame.h"
#include "platform/WindowsApi.h"

namespace {

/// Locked during an attempt, so at most one import runs. The dynamic library layer and the provider
/// calls need that.
std::mutex providerMutex;

/// The thread that holds the mutex. Unlike a thread-local mark it never allocates.
constexpr DWORD NO_THREAD = 0;
constinit std::atomic<DWORD> attemptingThread{NO_THREAD};

/// Locks the mutex for an attempt. Refuses a provider's own query, which would wait for itself.
class AttemptLock {
 public:
  AttemptLock() {
    const DWORD thisThread = GetCurrentThreadId();
    if (attemptingThread.load(std::memory_order_relaxed) == thisThread) {
      throw std::runtime_error("a provider made a query that needs an attempt of its own");
    }
    lock_.lock();
    attemptingThread.store(thisThread, std::memory_order_relaxed);
  }
  ~AttemptLock() { Release(); }
  AttemptLock(const AttemptLock&) = delete;
  AttemptLock& operator=(const AttemptLock&) = delete;

  void Release() noexcept {
    if (lock_.owns_lock()) {
      attemptingThread.store(NO_THREAD, std::memory_order_relaxed);
      lock_.unlock();
    }
  }

 private:
  std::unique_lock<std::mutex> lock_{providerMutex, std::defer_lock};
};

enum class ImportOutcome { NOT_COUNTED, COUNTED, FAILED };

/// Lets no exception out. What a provider throws may be of a type of its own, so it is gone before
/// the provider is unloaded.
ImportOutcome importFromProvider(SocInfo& record) noexcept try {
  ProviderLoader provider(ServiceUtilsOnly);
  if (!IsAcceptedProvider(provider)) {
    return ImportOutcome::NOT_COUNTED;
  }
  try {
    return ImportProviderCapabilities(provider, record) ? ImportOutcome::COUNTED
                                                        : ImportOutcome::NOT_COUNTED;
  } catch (...) {
    return ImportOutcome::FAILED;
  }
} catch (...) {
  return ImportOutcome::FAILED;
}

}  // namespace

bool IsAcceptedProvider(const ProviderLoader& provider) {
  return provider.handle != nullptr && provider.MissingExports().front() == nullptr &&
         (provider.libraryName == SERVICE_UTILS_LIBRARY ||
          provider.libraryName == SYSTEM_INFO_LIBRARY);
}

bool ProviderAttempt::AttemptUnderLock(SocInfo& record) {
  AttemptLock lock;
  if (!IsNeeded()) {
    return false;  // made by another thread meanwhile
  }
  struct Import {
    SocInfo& record;
    ProviderAttempt& attempt;
    AttemptLock& lock;
    ImportOutcome outcome;
  } import{record, *this, lock, ImportOutcome::FAILED};
  RunAttempt(
      [](void* context) {
        auto& running = *static_cast<Import*>(context);
        running.outcome = importFromProvider(running.record);
      },
      [](void* context) {
        // The program goes on after a fault in the provider, which nobody asks again.
        auto& abandoned = *static_cast<Import*>(context);
        abandoned.attempt.providerAttempted_.store(true, std::memory_order_release);
        abandoned.lock.Release();
      },
      &import);
  if (import.outcome == ImportOutcome::FAILED) {
    throw std::runtime_error("import failed");
  }
  // The outcome first: whoever sees that the attempt was made must see how it ended.
  recordConfirmed_.store(import.outcome == ImportOutcome::COUNTED, std::memory_order_release);
  providerAttempted_.store(true, std::memory_order_release);
  return true;
}
