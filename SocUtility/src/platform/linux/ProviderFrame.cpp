// One ABI serves the C++ compilers of this system, so every exception passes to a handler. But each
// library may have its own C++ runtime, as this one does. A hardware fault is a signal. A program's
// handler must not jump out of it, because no cleanup runs on a jump.
#include "platform/ProviderFrame.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <link.h>

#include <cstdint>

namespace {

/// What a C++ runtime keeps for each thread, as the ABI lays it out.
struct ExceptionGlobals {
  void* caughtExceptions;
  unsigned int uncaughtExceptions;
};

/// Takes back one exception in the count of the runtime that threw it. A throw raises the count of
/// the provider's runtime, while this library's catches and lowers its own.
void takeBackUncaughtException(Soc_GetCapabilityFn* query) {
  Dl_info symbol;
  link_map* module = nullptr;
  if (dladdr1(reinterpret_cast<const void*>(query), &symbol, reinterpret_cast<void**>(&module),
              RTLD_DL_LINKMAP) == 0) {
    return;
  }
  // Not found where the provider keeps its runtime to itself.
  void* const getGlobals = dlsym(module, "__cxa_get_globals");
  if (getGlobals == nullptr) {
    return;
  }
  void* const globals = reinterpret_cast<void* (*)()>(getGlobals)();
  unsigned int& uncaught = static_cast<ExceptionGlobals*>(globals)->uncaughtExceptions;
  if (globals != abi::__cxa_get_globals() && uncaught > 0) {
    --uncaught;
  }
}

}  // namespace

bool CallProvider(Soc_GetCapabilityFn* query, std::uint64_t component, std::uint64_t key,
                  void* buffer, std::uint64_t* size, std::uint32_t* status) try {
  *status = query(component, key, buffer, size);
  return true;
} catch (...) {
  takeBackUncaughtException(query);
  throw;
}

void RunAttempt(void (*attempt)(void* context), void (* /*abandon*/)(void* context),
                void* context) {
  // Prepares the library's unwinder, which is ready only after the library itself has thrown. A
  // provider's exception comes from another unwinder. It would end the process if this library had
  // not thrown before.
  try {
    throw 0;
  } catch (int) {
  }
  attempt(context);
}
