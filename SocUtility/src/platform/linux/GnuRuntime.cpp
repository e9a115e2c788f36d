// Changes to libstdc++, which is linked into the library and hidden. Compiled into the shared
// library only: in a program the runtime belongs to the program.
#include <cstdlib>

#ifdef __GLIBCXX__
// The runtime chose these names. NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*,readability-*)
namespace __gnu_cxx {

void __freeres();

// The runtime's handler prints the type of an uncaught exception. For this it links a demangler
// that is larger than the library's own code. No exception leaves an export.
void __verbose_terminate_handler();
void __verbose_terminate_handler() { std::abort(); }

}  // namespace __gnu_cxx

namespace {

// At start-up the runtime allocates a reserve for exceptions thrown when memory has run out, and
// keeps it until the process ends. The library can be unloaded and loaded many times before that.
[[gnu::destructor]] void releaseRuntimeMemory() { __gnu_cxx::__freeres(); }

}  // namespace
// NOLINTEND(bugprone-reserved-identifier,cert-dcl*,readability-*)
#endif
