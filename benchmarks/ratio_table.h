#pragma once

#include <benchmark/benchmark.h>

#include <string>

namespace velmora {

// Our units beside the best of others, as ratios. Every contender of a case does the same work from the same bytes in
// one process, in turns with the others, so that what else the machine does meets them alike.

inline const std::string kOurs = "ours";  // the contender whose time is divided by the best of the others

// Enters a contender for a case of a unit; one call of work is what is measured. Unit and case are named as in
// targets.h, and hold no slash.
template <typename Work>
void AddContender(const std::string& unit, const std::string& caseName, const std::string& contender, Work work) {
    const std::string name = unit + "/" + caseName + "/" + contender;
    benchmark::RegisterBenchmark(name.c_str(), [work](benchmark::State& state) mutable {
        for ([[maybe_unused]] auto iteration : state) work();
    });
}

// Likewise for work that takes its own time, leaving out what is not to be measured: one call does operations of them
// and returns the seconds that they took together.
template <typename TimedWork>
void AddTimedContender(const std::string& unit, const std::string& caseName, const std::string& contender,
                       int operations, TimedWork work) {
    const std::string name = unit + "/" + caseName + "/" + contender;
    benchmark::RegisterBenchmark(name.c_str(), [operations, work](benchmark::State& state) mutable {
        while (state.KeepRunningBatch(operations)) state.SetIterationTime(work());
    })->UseManualTime();
}

// Runs all that was entered and prints a line for each case that we take part in: our time, the best peer and its
// time, the ratio, and what targets.h asks. A contender's time is its median over many turns. The arguments are Google
// Benchmark's; --tsv prints the lines for ./bench instead, with a tab between any two columns and no heading:
//
//     unit, case, our figure, the peer's, the peer's name, the ratio, good, moonshot, what the figures count ("ns")
//
// Good and moonshot are empty for a case without a target. Gives the exit status for main: 1 for arguments that it does
// not know.
int RunRatioTable(int argc, char** argv);

}  // namespace velmora
