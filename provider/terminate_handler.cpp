#include <cstdlib>

// The C++ library's own handler prints the name of an error that nothing caught, and brings a demangler and a printf of
// some 60 KB for it. A service has no console to print on; this one, linked in its place, ends the process the same
// way.

namespace __gnu_cxx {

// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the library's name
void __verbose_terminate_handler();
void __verbose_terminate_handler() {
    std::abort();
}
// NOLINTEND(clang-diagnostic-reserved-identifier)

}  // namespace __gnu_cxx
