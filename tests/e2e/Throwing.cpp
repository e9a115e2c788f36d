// What a provider must not let out of its query: exceptions, by number. Compiled with the product's
// compiler and, for Windows, for MSVC's C++ ABI, which has no headers here.
#include <stdint.h>

#if !defined(_MSC_VER)
#include <exception>
#include <stdexcept>
#endif

extern "C" void ThrowException(uint64_t kind);
extern "C" void Note(const char* text);  // to the provider's log

namespace {

/// Its destructor is the provider's code, so an exception that outlives the provider is a crash.
struct Noted {
  const char* text;
  ~Noted() { Note(text); }
};

}  // namespace

void ThrowException(uint64_t kind) {
  switch (kind) {
    case 1:
      throw 1;  // without a destructor
    case 2: {
      const Noted local{"left\n"};
      throw Noted{"destroyed\n"};
    }
    case 3:
      try {
        throw 1;
      } catch (int) {
        throw;
      }
#if !defined(_MSC_VER)
    case 4:
      throw std::runtime_error("thrown by the provider");
    default:
      if (std::uncaught_exceptions() != 0) {
        Note("uncaught\n");
      }
#endif
  }
}

#if defined(_MSC_VER)
// The description of a thrown type names this table, which no DLL exports.
extern "C" const void* const typeInfoTable[1] __asm__("??_7type_info@@6B@");
const void* const typeInfoTable[1] = {nullptr};
#endif
