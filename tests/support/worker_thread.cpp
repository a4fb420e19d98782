#include "tests/support/worker_thread.h"

#include <windows.h>

#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

namespace velmora {
namespace {

DWORD WINAPI Run(void* work) {
    (*static_cast<std::function<void()>*>(work))();
    return 0;
}

}  // namespace

WorkerThread::WorkerThread(std::function<void()> call)
    : work(std::move(call)), thread(CreateThread(nullptr, 0, Run, &work, 0, nullptr)) {}

WorkerThread::~WorkerThread() {
    if (!EndsWithin(kPatienceMs)) {
        static_cast<void>(std::fputs("A thread of this test does not end.\n", stderr));
        static_cast<void>(std::fflush(nullptr));
        TerminateProcess(GetCurrentProcess(), 1);
    }
    CloseHandle(thread);
}

bool WorkerThread::EndsWithin(uint32_t milliseconds) {
    return WaitForSingleObject(thread, milliseconds) == WAIT_OBJECT_0;
}

void RunAtOnce(size_t count, const std::function<void(size_t)>& call) {
    std::vector<std::unique_ptr<WorkerThread>> threads;
    threads.reserve(count);
    for (size_t index = 0; index < count; ++index) {
        threads.push_back(std::make_unique<WorkerThread>([&call, index] { call(index); }));
    }
}

bool WaitUntil(const std::function<bool()>& condition) {
    const double deadline = PreciseMs() + kPatienceMs;
    while (!condition()) {
        if (PreciseMs() > deadline) return false;
        Sleep(1);
    }
    return true;
}

double PreciseMs() {
    LARGE_INTEGER count;
    LARGE_INTEGER countsPerSecond;
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&countsPerSecond);
    return 1000.0 * static_cast<double>(count.QuadPart) / static_cast<double>(countsPerSecond.QuadPart);
}

}  // namespace velmora
