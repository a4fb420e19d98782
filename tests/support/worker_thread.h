#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace velmora {

// How long a test waits for something that has to happen before it counts as missing. Long, because the machine may be
// busy: a test that passes never waits for it.
inline constexpr uint32_t kPatienceMs = 10000;

// A call on a thread of its own, so that a test can run several at once or see whether one ends in time. For a compiler
// whose library has no std::thread.
class WorkerThread {
public:
    explicit WorkerThread(std::function<void()> call);

    // Waits for the call to end. One that does not, even with patience, ends the whole test program as failed: it may
    // still use what the test is about to destroy.
    ~WorkerThread();

    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    // Whether the call has ended, at the latest milliseconds from now.
    bool EndsWithin(uint32_t milliseconds);

private:
    std::function<void()> work;
    void* thread;  // its Win32 handle
};

// Makes a call as often as this, all at once on a thread each, with the numbers from 0 on, and waits for their ends.
void RunAtOnce(size_t count, const std::function<void(size_t)>& call);

// Waits until a condition holds; whether it did before patience ran out. For what another thread has to bring about.
bool WaitUntil(const std::function<bool()>& condition);

// Milliseconds on a clock finer than the system's tick counters, for what a test measures.
double PreciseMs();

}  // namespace velmora
