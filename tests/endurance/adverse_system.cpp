// Winsock's header comes before windows.h.
#include <winsock2.h>
// and what builds on windows.h behind it
#include "tests/endurance/adverse_system.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>

#include "tests/support/import_hook.h"

namespace velmora {
namespace {

// How a thread strays: it loses its turn once in so many times, sleeps once in so many times, at most so long.
struct Straying {
    uint32_t yields;
    uint32_t sleeps;
    DWORD longestMs;
};
constexpr Straying kFromLock = {2, 64, 3};
constexpr Straying kFromMemory = {16, 1024, 3};

// Of a thread of the host: as long as an answer of the PBX takes, while others wait for the processor as well.
constexpr Straying kFarFromLock = {2, 8, 60};
constexpr Straying kFarFromMemory = {16, 64, 30};

constexpr DWORD kLongestSleepMs = 10;
constexpr int kSendBufferBytes = 8192;
constexpr int kSendPartBytes = 3000;

thread_local bool straysFar = false;

// A number without a pattern; threads may get the same one.
uint32_t Draw() {
    static std::atomic<uint32_t> drawn = 1;
    const uint32_t next = drawn * 1664525 + 1013904223;
    drawn = next;
    return next >> 8;
}

void Stray(const Straying& straying) {
    const uint32_t number = Draw();
    if (number % straying.sleeps == 0) {
        Sleep(1 + number / straying.sleeps % straying.longestMs);
    } else if (number % straying.yields == 0) {
        SwitchToThread();
    }
}

void WINAPI LeaveAndStray(CRITICAL_SECTION* section) {
    LeaveCriticalSection(section);
    Stray(straysFar ? kFarFromLock : kFromLock);
}

void* __cdecl StrayAndAllocate(size_t bytes) {
    Stray(straysFar ? kFarFromMemory : kFromMemory);
    return std::malloc(bytes);
}

void WINAPI SleepShortly(DWORD milliseconds) {
    Sleep(std::min(milliseconds, kLongestSleepMs));
}

int WINAPI ConnectWithSmallBuffer(SOCKET socket, const sockaddr* name, int nameBytes) {
    setsockopt(socket, SOL_SOCKET, SO_SNDBUF, reinterpret_cast<const char*>(&kSendBufferBytes),
               sizeof kSendBufferBytes);
    return connect(socket, name, nameBytes);
}

int WINAPI SendAllOrPart(SOCKET socket, const char* bytes, int count, int flags) {
    return send(socket, bytes, Draw() % 2 == 0 ? count : std::min(count, kSendPartBytes), flags);
}

}  // namespace

void MakeSystemAdverse(HMODULE module) {
    HookImport(module, "kernel32.dll", "LeaveCriticalSection", LeaveAndStray);
    HookImport(module, "kernel32.dll", "Sleep", SleepShortly);
    HookImport(module, "msvcrt.dll", "malloc", StrayAndAllocate);
    HookImport(module, "ws2_32.dll", "connect", ConnectWithSmallBuffer);
    HookImport(module, "ws2_32.dll", "send", SendAllOrPart);
}

void LetThisThreadStrayFar() {
    straysFar = true;
}

}  // namespace velmora
