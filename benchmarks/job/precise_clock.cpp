#include "benchmarks/job/precise_clock.h"

#include <x86intrin.h>
#include <ctime>

namespace velmora {
namespace {

int64_t Ns(const timespec& time) {
    return int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
}

int64_t NowNs(clockid_t clock = CLOCK_MONOTONIC_RAW) {
    timespec now{};
    clock_gettime(clock, &now);
    return Ns(now);
}

}  // namespace

int64_t CounterNow() {
    return NowNs() / 100;
}

int64_t CounterOf(const timespec& timeOfDay) {
    return (NowNs() - NowNs(CLOCK_REALTIME) + Ns(timeOfDay)) / 100;
}

double TicksPerNs() {
    constexpr int64_t kMeasuredNs = 20000000;
    const int64_t startNs = NowNs();
    const uint64_t startTicks = __rdtsc();
    int64_t passedNs = 0;
    while (passedNs < kMeasuredNs) passedNs = NowNs() - startNs;
    return static_cast<double>(__rdtsc() - startTicks) / static_cast<double>(passedNs);
}

}  // namespace velmora
