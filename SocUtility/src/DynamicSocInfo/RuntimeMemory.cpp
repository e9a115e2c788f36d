// The C++ runtime that is linked into the library sets 70 KB aside when it starts, to throw from
// when memory has run out, and leaves them to the end of the process. A library can be unloaded
// long before that and loaded again. Compiled into the shared library only: in a program the
// runtime is not the library's to clean up.
#include <cstddef>

#ifdef __GLIBCXX__
namespace __gnu_cxx {  // NOLINT(bugprone-reserved-identifier,cert-dcl*): the runtime's name

void __freeres();  // NOLINT(bugprone-reserved-identifier,cert-dcl*)

}  // namespace __gnu_cxx

namespace {

[[gnu::destructor]] void releaseRuntimeMemory() { __gnu_cxx::__freeres(); }

}  // namespace
#endif
