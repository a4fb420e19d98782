#include "benchmarks/ratio_table.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/targets.h"

namespace velmora {
namespace {

// Many short turns, so that the median of a contender's comes from the same times, quick and slow, as the others'.
const char* const kTurns[] = {
    "--benchmark_enable_random_interleaving=true",
    "--benchmark_repetitions=61",
    "--benchmark_min_time=0.005",
};

struct Case {
    std::string unit;
    std::string name;
    int64_t position = 0;                                // of its first contender among all that was entered
    std::map<std::string, std::vector<double>> turnsNs;  // by contender
};

// Its target; the end of kTargets when it has none.
const Target* FindTarget(const Case& measured) {
    return std::find_if(std::begin(kTargets), std::end(kTargets), [&](const Target& target) {
        return measured.unit == target.unit && measured.name == target.caseName;
    });
}

const char* Verdict(double ratio, const Target& target) {
    if (ratio <= target.moonshot) return "moonshot";
    return ratio <= target.good ? "good" : "MISSED";
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// A case's times in nanoseconds, and the peer's that took the least.
struct Outcome {
    double oursNs = 0;
    double peerNs = 0;
    std::string peer;  // its name; empty when there is none
};

Outcome OutcomeOf(const Case& measured) {
    Outcome outcome;
    for (const auto& [contender, turnsNs] : measured.turnsNs) {
        const double ns = Median(turnsNs);
        if (contender == kOurs) {
            outcome.oursNs = ns;
        } else if (outcome.peer.empty() || ns < outcome.peerNs) {
            outcome.peer = contender;
            outcome.peerNs = ns;
        }
    }
    return outcome;
}

void PrintForPeople(const Case& measured, const Outcome& outcome) {
    const double ratio = outcome.oursNs / outcome.peerNs;
    std::printf("%-21s %-19s %12.1f %12.1f %-10s %6.2f", measured.unit.c_str(), measured.name.c_str(), outcome.oursNs,
                outcome.peerNs, outcome.peer.c_str(), ratio);
    if (const Target* target = FindTarget(measured); target != std::end(kTargets)) {
        std::printf(" %6.2f %8.2f  %s", target->good, target->moonshot, Verdict(ratio, *target));
    }
    std::printf("\n");
}

void PrintForPrograms(const Case& measured, const Outcome& outcome) {
    std::printf("%s\t%s\t%.1f\t%.1f\t%s\t%.4f", measured.unit.c_str(), measured.name.c_str(), outcome.oursNs,
                outcome.peerNs, outcome.peer.c_str(), outcome.oursNs / outcome.peerNs);
    if (const Target* target = FindTarget(measured); target != std::end(kTargets)) {
        std::printf("\t%g\t%g", target->good, target->moonshot);
    } else {
        std::printf("\t\t");
    }
    std::printf("\tns\n");
}

class RatioTable : public benchmark::BenchmarkReporter {
public:
    explicit RatioTable(bool isForPrograms) : forPrograms(isForPrograms) {}

    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) continue;
            if (run.error_occurred) {
                static_cast<void>(
                    std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str()));
                continue;
            }
            const bool ownTime = !run.run_name.time_type.empty();
            const double seconds = ownTime ? run.real_accumulated_time : run.cpu_accumulated_time;
            Enter(run.run_name.function_name, run.family_index, seconds * 1e9 / static_cast<double>(run.iterations));
        }
    }

    void Finalize() override {
        // The turns come in no order.
        std::sort(cases.begin(), cases.end(), [](const Case& one, const Case& other) {
            return std::pair(FindTarget(one), one.position) < std::pair(FindTarget(other), other.position);
        });
        if (!forPrograms) {
            std::printf("%-21s %-19s %12s %12s %-10s %6s %6s %8s\n", "unit", "case", "ours ns", "peer ns", "best peer",
                        "ratio", "good", "moonshot");
        }
        for (const Case& measured : cases) {
            const Outcome outcome = OutcomeOf(measured);
            if (outcome.oursNs == 0 || outcome.peer.empty()) continue;
            forPrograms ? PrintForPrograms(measured, outcome) : PrintForPeople(measured, outcome);
        }
    }

private:
    // name is "unit/case/contender".
    void Enter(const std::string& name, int64_t position, double ns) {
        const size_t first = name.find('/');
        const size_t last = name.rfind('/');
        const std::string unit = name.substr(0, first);
        const std::string caseName = name.substr(first + 1, last - first - 1);
        auto found = std::find_if(cases.begin(), cases.end(), [&](const Case& measured) {
            return measured.unit == unit && measured.name == caseName;
        });
        if (found == cases.end()) found = cases.insert(found, {unit, caseName, position, {}});
        found->position = std::min(found->position, position);
        found->turnsNs[name.substr(last + 1)].push_back(ns);
    }

    bool forPrograms;
    std::vector<Case> cases;
};

}  // namespace

int RunRatioTable(int argc, char** argv) {
    // Ours come first, so that an argument from outside overrides them.
    std::vector<std::string> arguments = {argv[0]};
    arguments.insert(arguments.end(), std::begin(kTurns), std::end(kTurns));
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    const bool forPrograms = std::erase(arguments, "--tsv") > 0;
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 1;
    RatioTable table(forPrograms);
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    // Some contenders hold what must not outlive their libraries.
    benchmark::ClearRegisteredBenchmarks();
    return 0;
}

}  // namespace velmora
