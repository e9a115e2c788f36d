#include "DynamicSocInfo/ProviderAttempt.h"

#include <mutex>
#include <stdexcept>

#include "DynamicSocInfo/import/ProviderImport.h"
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
  ~AttemptLock() { attemptingThread.store(NO_THREAD, std::memory_order_relaxed); }
  AttemptLock(const AttemptLock&) = delete;
  AttemptLock& operator=(const AttemptLock&) = delete;

 private:
  std::unique_lock<std::mutex> lock_{providerMutex, std::defer_lock};
};

/// A first throw of the library's own, for systems where each image has its unwinder linked into
/// it. The library's is not ready before that, while a provider's exception arrives by another one
/// and would end the process. Windows unwinds by itself.
void makeUnwinderReady() {
#ifdef __ELF__
  try {
    throw 0;
  } catch (int) {
  }
#endif
}

bool importFromProvider(SocInfo& record) {
  ProviderLoader provider(ServiceUtilsOnly);
  if (!IsAcceptedProvider(provider)) {
    return false;
  }
  makeUnwinderReady();
  try {
    return ImportProviderCapabilities(provider, record);
  } catch (...) {
    // What a provider lets out may be of a type of its own, which is gone once it is unloaded.
    throw std::runtime_error("import failed");
  }
}

}  // namespace

bool IsAcceptedProvider(const ProviderLoader& provider) {
  const bool hasQuery = provider.handle != nullptr && provider.getApiVersion != nullptr &&
                        provider.getCapability != nullptr;
  if (provider.libraryName == SERVICE_UTILS_LIBRARY) {
    return hasQuery;
  }
  return provider.libraryName == SYSTEM_INFO_LIBRARY && hasQuery &&
         provider.getCapabilitySerialized != nullptr;
}

bool ProviderAttempt::AttemptLocked(SocInfo& record) {
  const AttemptLock lock;
  if (!IsNeeded()) {
    return false;  // made by another thread meanwhile
  }
  // The outcome first: whoever sees that the attempt was made must see how it ended.
  recordConfirmed_.store(importFromProvider(record), std::memory_order_release);
  providerAttempted_.store(true, std::memory_order_release);
  return true;
}
