// The guard value that the compiler lays behind the local arrays of a function, and what happens when it was
// written over. The compiler's own library has both, but draws the value from a cryptographic provider, whose
// libraries cost every start of the program some milliseconds; the system's plain source of random numbers is
// as good.

#include "app/base/Win32.h"

#include <ntsecapi.h>

#include <cstdint>

extern "C" {

std::uintptr_t __stack_chk_guard = 0;

[[noreturn]] void __stack_chk_fail() {
  // The system's fast failure: no handler may run on such a stack.
  __asm__ volatile("int $0x29" : : "c"(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE));
  __builtin_unreachable();
}

}  // extern "C"

namespace {

// Before any constructor that is guarded itself. What the generator may leave undone the address of the stack
// and the clock make up for.
__attribute__((constructor(101), no_stack_protector)) void ChooseStackGuard() {
  std::uintptr_t value = 0;
  LARGE_INTEGER now;
  if (!::RtlGenRandom(&value, sizeof value)) {
    ::QueryPerformanceCounter(&now);
    value = reinterpret_cast<std::uintptr_t>(&now) * 0x9E3779B97F4A7C15u ^
            static_cast<std::uintptr_t>(now.QuadPart);
  }
  // A zero byte stops the string functions from writing it.
  __stack_chk_guard = value & ~std::uintptr_t{0xFF};
}

}  // namespace
