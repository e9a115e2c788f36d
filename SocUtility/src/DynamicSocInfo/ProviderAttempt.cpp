#include "DynamicSocInfo/ProviderAttempt.h"

#include <mutex>
#include <optional>
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

/// Whether the import succeeded; nothing if an exception ended it. Catches every exception here,
/// because its type may be defined in the provider: the exception must be destroyed before the
/// provider is unloaded.
std::optional<bool> importFromProvider(SocInfo& record) noexcept try {
  ProviderLoader provider(ServiceUtilsOnly);
  if (!IsAcceptedProvider(provider)) {
    return false;
  }
  try {
    return ImportProviderCapabilities(provider, record);
  } catch (...) {
    return std::nullopt;
  }
} catch (...) {
  return std::nullopt;
}

/// `RunAttempt` for actions that are lambdas.
template <class Attempt, class Abandon>
void attemptOrAbandon(Attempt attempt, Abandon abandon) {
  struct Actions {
    Attempt& attempt;
    Abandon& abandon;
  } actions{attempt, abandon};
  RunAttempt([](void* context) { static_cast<Actions*>(context)->attempt(); },
             [](void* context) { static_cast<Actions*>(context)->abandon(); }, &actions);
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
  std::optional<bool> succeeded;
  attemptOrAbandon([&] { succeeded = importFromProvider(record); },
                   [&] {
                     // The program goes on, and this attempt is not repeated. No destructor runs.
                     providerAttempted_.store(true, std::memory_order_release);
                     lock.Release();
                   });
  if (!succeeded) {
    throw std::runtime_error("an exception ended the import");
  }
  // The outcome first: whoever sees that the attempt was made must see how it ended.
  recordConfirmed_.store(*succeeded, std::memory_order_release);
  providerAttempted_.store(true, std::memory_order_release);
  return true;
}
