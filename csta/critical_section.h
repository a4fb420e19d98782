#pragma once

#include <windows.h>

namespace velmora {

// A lock that its owner may take again.
class CriticalSection {
public:
    CriticalSection() { InitializeCriticalSection(&section); }
    ~CriticalSection() { DeleteCriticalSection(&section); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    // Whether no other thread holds it at this moment.
    bool IsFree() {
        if (TryEnterCriticalSection(&section) == 0) return false;
        LeaveCriticalSection(&section);
        return true;
    }

private:
    friend class CriticalSectionGuard;
    CRITICAL_SECTION section;
};

// Holds a critical section for the length of a scope.
class CriticalSectionGuard {
public:
    explicit CriticalSectionGuard(CriticalSection& lock) : section(lock.section) { EnterCriticalSection(&section); }
    ~CriticalSectionGuard() { LeaveCriticalSection(&section); }
    CriticalSectionGuard(const CriticalSectionGuard&) = delete;
    CriticalSectionGuard& operator=(const CriticalSectionGuard&) = delete;

private:
    CRITICAL_SECTION& section;
};

}  // namespace velmora
