// What a provider must not let out of its query: exceptions, by number. Compiled with the product's
// compiler and, for Windows, for MSVC's C++ ABI, which has no headers here.
#include <stdint.h>

#if !defined(_MSC_VER)
#include <exception>
#include <stdexcept>
#endif

#include "Host.h"

extern "C" void ThrowException(uint64_t kind);

namespace {

void note(const char* line, size_t length) { HostAppend("provider.log", line, length); }

/// Its destructor is the provider's code, so an exception that outlives the provider is a crash.
struct OwnFault {
  OwnFault() = default;
  OwnFault(const OwnFault&) = delete;
  OwnFault& operator=(const OwnFault&) = delete;
  OwnFault(OwnFault&& other) noexcept : isNoted(other.isNoted) { other.isNoted = false; }
  ~OwnFault() {
    if (isNoted) {
      note("destroyed\n", 10);
    }
  }
  bool isNoted = true;
};

/// What lives in a frame that the exception leaves.
struct Local {
  Local() = default;
  Local(const Local&) = delete;
  Local& operator=(const Local&) = delete;
  ~Local() { note("left\n", 5); }
};

[[noreturn]] void throwAgain() {
  try {
    throw OwnFault();
  } catch (const OwnFault&) {
    throw;
  }
}

}  // namespace

void ThrowException(uint64_t kind) {
  switch (kind) {
    case 1:
      throw 1;
    case 2: {
      const Local local;
      throw OwnFault();
    }
    case 3:
      throwAgain();
#if !defined(_MSC_VER)
    case 4:
      throw std::runtime_error("thrown by the provider");
    default:
      if (std::uncaught_exceptions() != 0) {
        note("uncaught\n", 9);
      }
#endif
  }
}

#if defined(_MSC_VER)
// The description of a thrown type names this table, which no DLL exports.
extern "C" const void* const typeInfoTable[1] __asm__("??_7type_info@@6B@");
const void* const typeInfoTable[1] = {nullptr};
#endif
