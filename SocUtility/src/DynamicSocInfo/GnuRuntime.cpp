// What the library changes in libstdc++, which is linked into it and hidden. Compiled into the
// shared library only: in a program the runtime is not the library's.
#include <cstdlib>

#ifdef __GLIBCXX__
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*): the runtime's names
namespace __gnu_cxx {

void __freeres();

// The runtime's handler prints the type of an exception that nobody caught, and brings a demangler
// larger than the library's own code. No exception leaves an export.
void __verbose_terminate_handler();
void __verbose_terminate_handler() { std::abort(); }

}  // namespace __gnu_cxx

namespace {

// The runtime allocates 70 KB when it starts, to throw from when memory has run out, and keeps them
// until the process ends. The library can be unloaded and loaded many times before that.
[[gnu::destructor]] void releaseRuntimeMemory() { __gnu_cxx::__freeres(); }

}  // namespace
// NOLINTEND(bugprone-reserved-identifier,cert-dcl*)
#endif
