#include <gtest/gtest.h>
#include <malloc.h>
#include <windows.h>

#include "tests/support/small_stack.h"

namespace velmora {
namespace {

constexpr SIZE_T kStackBytes = SIZE_T{256} * 1024;
constexpr DWORD kWorkDone = 256;  // the thread's exit code; a thread that Wine ends for want of stack has another

// How far the stack can still grow below here, a variable on it.
SIZE_T FreeStackBytes(const char* here) {
    MEMORY_BASIC_INFORMATION stack;
    VirtualQuery(here, &stack, sizeof(stack));
    return static_cast<SIZE_T>(here - static_cast<const char*>(stack.AllocationBase));
}

DWORD WINAPI RunWork(LPVOID work) {
    // Wine makes a stack no smaller than 1 MB: what it gives too much is taken away.
    const char here = 0;
    const SIZE_T freeBytes = FreeStackBytes(&here);
    if (freeBytes > kStackBytes) *static_cast<volatile char*>(_alloca(freeBytes - kStackBytes)) = 0;

    (*static_cast<const std::function<void()>*>(work))();
    return kWorkDone;
}

}  // namespace

void RunOnSmallStack(const std::function<void()>& work) {
    std::function<void()> copy = work;
    const HANDLE thread =
        CreateThread(nullptr, kStackBytes, RunWork, &copy, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    DWORD exitCode = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &exitCode));
    EXPECT_EQ(exitCode, kWorkDone) << "the stack was too small";
    CloseHandle(thread);
}

}  // namespace velmora
