#include <windows.h>

#include <ctime>

void InitializeCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&section->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutex_destroy(&section->mutex);
}

void EnterCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutex_lock(&section->mutex);
}

BOOL TryEnterCriticalSection(CRITICAL_SECTION* section) {
    return pthread_mutex_trylock(&section->mutex) == 0 ? 1 : 0;
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutex_unlock(&section->mutex);
}

void InitializeConditionVariable(CONDITION_VARIABLE* variable) {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&variable->condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

void WakeAllConditionVariable(CONDITION_VARIABLE* variable) {
    pthread_cond_broadcast(&variable->condition);
}

BOOL SleepConditionVariableCS(CONDITION_VARIABLE* variable, CRITICAL_SECTION* section, DWORD milliseconds) {
    timespec deadline = {};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    const int64_t nanoseconds = deadline.tv_nsec + int64_t{milliseconds} * 1000000;
    deadline.tv_sec += nanoseconds / 1000000000;
    deadline.tv_nsec = nanoseconds % 1000000000;
    return pthread_cond_timedwait(&variable->condition, &section->mutex, &deadline) == 0 ? 1 : 0;
}
