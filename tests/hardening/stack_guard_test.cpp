#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmora {
namespace {

// Writes count bytes into a buffer of 16, where the compiler does not see it.
[[gnu::noinline]] void FillBuffer(size_t count) {
    volatile char buffer[16];
    volatile char* end = buffer;
    for (size_t written = 0; written < count; ++written) *end++ = 'A';
}

TEST(StackGuard, LetsABufferBeFilledToItsEnd) {
    FillBuffer(16);
}

TEST(StackGuardDeathTest, EndsTheProcessThatWroteBeyondABuffer) {
    EXPECT_EXIT(FillBuffer(64), testing::ExitedWithCode(static_cast<int>(STATUS_STACK_BUFFER_OVERRUN)), "");
}

}  // namespace
}  // namespace velmora
