// The runtime that is linked into the library brings a handler that prints the type of an exception
// nobody caught, and with it a demangler larger than the library's own code. No exception leaves an
// export, so the library ends such a process without a word. Compiled for libstdc++ only.
#include <cstdlib>

#ifdef __GLIBCXX__
namespace __gnu_cxx {  // NOLINT(bugprone-reserved-identifier,cert-dcl*): the runtime's name

void __verbose_terminate_handler();  // NOLINT(bugprone-reserved-identifier,cert-dcl*)
void __verbose_terminate_handler() { std::abort(); }

}  // namespace __gnu_cxx
#endif
