#include "tests/support/process_use.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <tlhelp32.h>

#include <bit>
#include <iterator>

namespace velmora {

// Counted by trying each value that a handle can have in a process with fewer than some thousand of them: Wine does not
// keep the count that Windows gives.
size_t OpenHandles() {
    constexpr uintptr_t kHighestValue = 0x4000;
    size_t count = 0;
    for (uintptr_t value = 4; value <= kHighestValue; value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(std::bit_cast<HANDLE>(value), &flags) != 0) ++count;
    }
    return count;
}

std::vector<uint32_t> ThreadIds() {
    std::vector<uint32_t> ids;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    EXPECT_NE(snapshot, INVALID_HANDLE_VALUE);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL found = Thread32First(snapshot, &entry); found != 0; found = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ids.push_back(entry.th32ThreadID);
    }
    CloseHandle(snapshot);
    return ids;
}

size_t HeapBytes() {
    HANDLE heaps[32] = {};
    const DWORD count = GetProcessHeaps(std::size(heaps), heaps);
    EXPECT_LE(count, std::size(heaps));
    size_t bytes = 0;
    for (DWORD index = 0; index < count; ++index) {
        PROCESS_HEAP_ENTRY entry = {};
        HeapLock(heaps[index]);
        while (HeapWalk(heaps[index], &entry) != 0) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
        }
        HeapUnlock(heaps[index]);
    }
    return bytes;
}

size_t CommittedBytes() {
    size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region = {};
    for (char* address = nullptr; VirtualQuery(address, &region, sizeof region) != 0; address += region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    }
    return bytes;
}

size_t RunningThreads() {
    return ThreadIds().size();
}

}  // namespace velmora
