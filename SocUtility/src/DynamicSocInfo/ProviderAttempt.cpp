#include "DynamicSocInfo/ProviderAttempt.h"

#include <mutex>
#include <stdexcept>

#include "DynamicSocInfo/import/ProviderImport.h"
#include "platform/WindowsApi.h"

namespace {

/// Held for the whole of every attempt: two imports never run at once, and the dynamic library
/// layer and the provider calls rely on it.
std::mutex providerMutex;

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

/// Notes the thread inside an attempt, and withdraws what warm queries answer from: those do not
/// ask who calls, and the provider's own queries are to be refused.
class ProviderAttempt::Running {
 public:
  Running() {
    settledAnswers.store(&NO_SCALAR_ANSWERS, std::memory_order_relaxed);
    runningThread_.store(GetCurrentThreadId(), std::memory_order_relaxed);
  }
  ~Running() { runningThread_.store(NO_THREAD, std::memory_order_relaxed); }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;
};

bool ProviderAttempt::MakeOnceLocked(SocInfo& record) {
  const std::lock_guard lock(providerMutex);
  if (!IsStillToBeMade()) {
    return false;
  }
  const Running running;
  // The outcome first: whoever sees that the attempt was made must see how it ended.
  recordConfirmed_.store(importFromProvider(record), std::memory_order_release);
  providerAttempted_.store(true, std::memory_order_release);
  return true;
}

void ProviderAttempt::Settle(const ScalarAnswers& answers) {
  const std::unique_lock lock(providerMutex, std::try_to_lock);
  if (lock.owns_lock()) {
    settledAnswers.store(&answers, std::memory_order_release);
  }
}
