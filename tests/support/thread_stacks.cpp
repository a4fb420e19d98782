#include "tests/support/thread_stacks.h"

#include <windows.h>

#include <array>
#include <cstdio>
#include <vector>

#include "tests/support/process_use.h"

namespace velmora {
namespace {

constexpr size_t kMaxCalls = 24;

using Calls = std::array<DWORD64, kMaxCalls>;  // zeros behind the outermost

bool CanRead(DWORD64 address) {
    MEMORY_BASIC_INFORMATION region = {};
    if (VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) == 0) return false;
    return region.State == MEM_COMMIT && region.Protect != PAGE_NOACCESS;
}

// To the caller of the function that the context is in. False at the outermost one.
bool StepOut(CONTEXT& context) {
    DWORD64 base = 0;
    RUNTIME_FUNCTION* function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
    if (function == nullptr) {
        // A function without an entry has nothing on the stack but its return address.
        if (!CanRead(context.Rsp)) return false;
        context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
        context.Rsp += sizeof(DWORD64);
    } else {
        void* handlerData = nullptr;
        DWORD64 frame = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handlerData, &frame, nullptr);
    }
    return context.Rip != 0;
}

// Nothing is allocated while the thread is stopped: it may hold the heap's lock.
Calls CallsOf(HANDLE thread) {
    Calls calls = {};
    if (SuspendThread(thread) == static_cast<DWORD>(-1)) return calls;
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_FULL;
    if (GetThreadContext(thread, &context) != 0) {
        size_t count = 0;
        do {
            calls[count++] = context.Rip;
        } while (count < kMaxCalls && StepOut(context));
    }
    ResumeThread(thread);
    return calls;
}

std::string PlaceOf(DWORD64 address) {
    HMODULE module = nullptr;
    char path[MAX_PATH] = "?";
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const char*>(address), &module) != 0) {
        GetModuleFileNameA(module, path, MAX_PATH);
    }
    const std::string whole = path;
    char offset[32];
    std::snprintf(offset, sizeof offset, "+0x%llx", address - reinterpret_cast<DWORD64>(module));
    return whole.substr(whole.find_last_of("\\/") + 1) + offset;
}

}  // namespace

std::string ThreadStacks() {
    std::string text;
    for (const uint32_t id : ThreadIds()) {
        if (id == GetCurrentThreadId()) continue;
        const HANDLE thread = OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT, FALSE, id);
        if (thread == nullptr) continue;
        text += "thread " + std::to_string(id) + ":";
        for (const DWORD64 address : CallsOf(thread)) {
            if (address != 0) text += " " + PlaceOf(address);
        }
        text += "\n";
        CloseHandle(thread);
    }
    return text;
}

}  // namespace velmora
