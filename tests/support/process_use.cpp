#include "tests/support/process_use.h"

#include <windows.h>

#include <tlhelp32.h>

#include <bit>

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
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL found = Thread32First(snapshot, &entry); found != 0; found = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ids.push_back(entry.th32ThreadID);
    }
    CloseHandle(snapshot);
    return ids;
}

size_t HeapBytes() {
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    size_t bytes = 0;
    for (const HANDLE heap : heaps) {
        PROCESS_HEAP_ENTRY entry = {};
        HeapLock(heap);
        while (HeapWalk(heap, &entry) != 0) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
        }
        HeapUnlock(heap);
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
