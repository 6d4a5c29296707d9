#include "app/base/Win32.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

extern "C" std::uintptr_t __stack_chk_guard;

namespace kestrelon {
namespace {

// More than the buffer takes, which the compiler must not see.
__attribute__((noinline)) void WriteOver(std::size_t count) {
  volatile char buffer[16];
  volatile char* at = buffer;
  for (std::size_t i = 0; i < count; ++i) at[i] = 'x';
}

TEST(StackGuard, IsDrawnAndBeginsWithAZero) {
  EXPECT_NE(__stack_chk_guard, 0u);
  EXPECT_EQ(__stack_chk_guard & 0xFF, 0u);
}

TEST(StackGuardDeathTest, EndsTheProgramWhenAFunctionWritesOverItsStack) {
  WriteOver(16);
  EXPECT_EXIT(WriteOver(32), testing::ExitedWithCode(static_cast<int>(STATUS_STACK_BUFFER_OVERRUN)), "");
}

}  // namespace
}  // namespace kestrelon
