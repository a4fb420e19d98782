#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

// Windows' names, answered by POSIX: so that sources for Windows, as they are, run on Linux under the sanitizers. Here
// is what csta/ and the supports of its tests call, and no more; types, arguments, results and effects are those of
// Microsoft's pages. Nothing here orders two threads that Windows would not order: a race stays one.
//
// windows.h: locks, threads, semaphores and time. winsock2.h: sockets.

using BOOL = int;
using WORD = uint16_t;
using DWORD = uint32_t;
using UINT = unsigned int;
using LONG = int32_t;
using LONGLONG = int64_t;
using HANDLE = void*;

inline constexpr BOOL TRUE = 1;

constexpr WORD MAKEWORD(unsigned low, unsigned high) {
    return static_cast<WORD>(low | high << 8);
}

// Locks. A critical section may be entered again by the thread that holds it.

struct CRITICAL_SECTION {
    pthread_mutex_t mutex;
};

void InitializeCriticalSection(CRITICAL_SECTION* section);
void DeleteCriticalSection(CRITICAL_SECTION* section);
void EnterCriticalSection(CRITICAL_SECTION* section);
BOOL TryEnterCriticalSection(CRITICAL_SECTION* section);
void LeaveCriticalSection(CRITICAL_SECTION* section);

struct CONDITION_VARIABLE {
    pthread_cond_t condition;
};

void InitializeConditionVariable(CONDITION_VARIABLE* variable);
void WakeAllConditionVariable(CONDITION_VARIABLE* variable);

// The section is held once. 0 when the time is over.
BOOL SleepConditionVariableCS(CONDITION_VARIABLE* variable, CRITICAL_SECTION* section, DWORD milliseconds);

// Handles: of semaphores and of threads. A thread's is signalled once the thread has ended, and stays so.

#define WINAPI
using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(void* parameter);

inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

// The greatest maximum is every semaphore's.
HANDLE CreateSemaphoreW(void* attributes, LONG initialCount, LONG maximumCount, const wchar_t* name);
BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previousCount);

HANDLE CreateThread(void* attributes, size_t stackBytes, LPTHREAD_START_ROUTINE function, void* parameter, DWORD flags,
                    DWORD* threadId);

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);
BOOL CloseHandle(HANDLE object);

// Ends this process, the only one whose handle there is.
HANDLE GetCurrentProcess();
BOOL TerminateProcess(HANDLE process, UINT exitCode);

// Ends the calls that wait in a socket, in any thread; 0 when it is none.
BOOL CancelIoEx(HANDLE socket, void* overlapped);

void Sleep(DWORD milliseconds);

struct LARGE_INTEGER {
    LONGLONG QuadPart;
};

BOOL QueryPerformanceCounter(LARGE_INTEGER* count);
BOOL QueryPerformanceFrequency(LARGE_INTEGER* countsPerSecond);
