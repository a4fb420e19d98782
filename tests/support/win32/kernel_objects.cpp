#include <semaphore.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <memory>
#include <thread>
#include <utility>

#include "tests/support/process_use.h"

namespace {

// How often something has been signalled. POSIX's own semaphore: what is done before a Signal is visible behind the
// Wait for it, and nothing is ordered the other way round.
class Signals {
public:
    explicit Signals(unsigned count) { sem_init(&semaphore, 0, count); }
    ~Signals() { sem_destroy(&semaphore); }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    bool Signal() { return sem_post(&semaphore) == 0; }
    bool Wait(DWORD milliseconds);

private:
    sem_t semaphore;
};

bool Signals::Wait(DWORD milliseconds) {
    timespec deadline = {};
    clock_gettime(CLOCK_REALTIME, &deadline);
    const int64_t nanoseconds = deadline.tv_nsec + int64_t{milliseconds} * 1000000;
    deadline.tv_sec += nanoseconds / 1000000000;
    deadline.tv_nsec = nanoseconds % 1000000000;
    while (true) {
        const int result = milliseconds == INFINITE ? sem_wait(&semaphore) : sem_timedwait(&semaphore, &deadline);
        if (result == 0) return true;
        if (errno != EINTR) return false;
    }
}

// What a handle points to. The thread that has ended signals itself, so it shares its signals.
struct KernelObject {
    std::shared_ptr<Signals> signals;
    std::thread thread;  // none: a semaphore
};

std::atomic<size_t> openHandles = 0;

HANDLE NewHandle(KernelObject object) {
    openHandles.fetch_add(1, std::memory_order_relaxed);
    return new KernelObject(std::move(object));
}

KernelObject* ObjectOf(HANDLE handle) {
    return static_cast<KernelObject*>(handle);
}

}  // namespace

size_t velmora::OpenHandles() {
    return openHandles;
}

HANDLE CreateSemaphoreW(void* /*attributes*/, LONG initialCount, LONG /*maximumCount*/, const wchar_t* /*name*/) {
    return NewHandle({std::make_shared<Signals>(static_cast<unsigned>(initialCount)), {}});
}

BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* /*previousCount*/) {
    if (semaphore == nullptr) return 0;
    for (; count > 0; --count) {
        if (!ObjectOf(semaphore)->signals->Signal()) return 0;
    }
    return 1;
}

HANDLE CreateThread(void* /*attributes*/, size_t /*stackBytes*/, LPTHREAD_START_ROUTINE function, void* parameter,
                    DWORD /*flags*/, DWORD* /*threadId*/) {
    const auto ended = std::make_shared<Signals>(0);
    return NewHandle({ended, std::thread([=] {
                          function(parameter);
                          ended->Signal();
                      })});
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    if (object == nullptr) return WAIT_FAILED;
    if (!ObjectOf(object)->signals->Wait(milliseconds)) return WAIT_TIMEOUT;
    if (ObjectOf(object)->thread.joinable()) ObjectOf(object)->signals->Signal();
    return WAIT_OBJECT_0;
}

// A thread that has not ended goes on without its handle.
BOOL CloseHandle(HANDLE object) {
    if (object == nullptr) return 0;
    const std::unique_ptr<KernelObject> closed(ObjectOf(object));
    openHandles.fetch_sub(1, std::memory_order_relaxed);
    if (!closed->thread.joinable()) return 1;
    if (closed->signals->Wait(0)) {
        closed->thread.join();
    } else {
        closed->thread.detach();
    }
    return 1;
}

HANDLE GetCurrentProcess() {
    return nullptr;
}

BOOL TerminateProcess(HANDLE /*process*/, UINT exitCode) {
    _exit(static_cast<int>(exitCode));
}

void Sleep(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* count) {
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    count->QuadPart = std::chrono::duration_cast<std::chrono::nanoseconds>(since).count();
    return 1;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* countsPerSecond) {
    countsPerSecond->QuadPart = 1000000000;
    return 1;
}
