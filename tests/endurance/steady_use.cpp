#include "tests/endurance/steady_use.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/support/process_use.h"
#include "tests/support/worker_thread.h"

namespace velmora {
namespace {

constexpr size_t kCommitStepBytes = 262144;  // a heap may have grown by one step
// What the system makes for itself, now and then.
constexpr size_t kSystemHandles = 8;
constexpr size_t kSystemThreads = 1;

void PrintFigure(const char* name, size_t before, size_t after) {
    std::printf("%-16s %12zu before, %12zu after\n", name, before, after);
}

}  // namespace

SteadyUse::SteadyUse() : before(Now()), startMs(PreciseMs()) {}

void SteadyUse::ExpectUnchanged(const std::string& rounds, size_t count, size_t noiseBytes) const {
    const double seconds = (PreciseMs() - startMs) / 1000;
    const Figures after = Now();
    std::printf("%zu %s in %.1f s, %.0f a second\n", count, rounds.c_str(), seconds,
                static_cast<double>(count) / seconds);
    PrintFigure("heap bytes", before.heapBytes, after.heapBytes);
    PrintFigure("committed bytes", before.committedBytes, after.committedBytes);
    PrintFigure("handles", before.handles, after.handles);
    PrintFigure("threads", before.threads, after.threads);
    EXPECT_LE(after.heapBytes, before.heapBytes + noiseBytes);
    EXPECT_LE(after.committedBytes, before.committedBytes + kCommitStepBytes + noiseBytes);
    EXPECT_LE(after.handles, before.handles + kSystemHandles);
    EXPECT_LE(after.threads, before.threads + kSystemThreads);
}

SteadyUse::Figures SteadyUse::Now() {
    return {HeapBytes(), CommittedBytes(), OpenHandles(), RunningThreads()};
}

}  // namespace velmora
