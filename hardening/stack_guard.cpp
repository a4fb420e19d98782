#include <windows.h>

#include <ntsecapi.h>

#include <cstdint>

// What code compiled with -fstack-protector-strong calls for (GCC manual, "Program Instrumentation Options"): a
// function with a buffer on its stack puts the guard between the buffer and its return address, and looks at it before
// it returns.

// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the compiler's names
extern "C" {
extern uintptr_t __stack_chk_guard;
[[noreturn]] void __stack_chk_fail();

// Random from before the first constructor of the program or DLL, and never changed again: no lock. Without random
// bytes it keeps this value, whose zero, line feed, carriage return and 0xFF end most ways of copying a text.
uintptr_t __stack_chk_guard = 0xFF0D0A00FF0D0A00;

// The stack is overwritten, so nothing is put in order any more: the process ends at once, as with Microsoft's
// compiler, whose __fastfail this is (Microsoft's page on that intrinsic).
void __stack_chk_fail() {
    asm volatile("int $0x29" : : "c"(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE));
    __builtin_unreachable();
}
}
// NOLINTEND(clang-diagnostic-reserved-identifier)

namespace velmora {
namespace {

// 101 is the first priority that a program may take.
__attribute__((constructor(101))) void chooseStackGuard() {
    uintptr_t chosen = 0;
    if (RtlGenRandom(&chosen, sizeof chosen) != 0) __stack_chk_guard = chosen;
}

}  // namespace
}  // namespace velmora
