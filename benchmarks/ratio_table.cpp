#include "benchmarks/ratio_table.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/ratio_line.h"

namespace velmora {
namespace {

// Many short turns, so that the median of a contender's comes from the same times, quick and slow, as the others'.
const char* const kTurns[] = {
    "--benchmark_enable_random_interleaving=true",
    "--benchmark_repetitions=61",
    "--benchmark_min_time=0.005",
};

constexpr int kCaseColumns = 19;

struct Case {
    std::string unit;
    std::string name;
    int64_t position = 0;                                // of its first contender among all that was entered
    std::map<std::string, std::vector<double>> turnsNs;  // by contender
};

const Target* FindTarget(const Case& measured) {
    return velmora::FindTarget(measured.unit, measured.name);
}

// A case's median times in nanoseconds, and the peer's that took the least. Without a peer that has no name.
RatioLine LineOf(const Case& measured) {
    RatioLine line;
    line.unit = measured.unit;
    line.caseName = measured.name;
    for (const auto& [contender, turnsNs] : measured.turnsNs) {
        const double ns = Quantile(turnsNs, 0.5);
        if (contender == kOurs) {
            line.ours = ns;
        } else if (line.peerName.empty() || ns < line.peer) {
            line.peerName = contender;
            line.peer = ns;
        }
    }
    return line;
}

class RatioTable : public benchmark::BenchmarkReporter {
public:
    explicit RatioTable(TableForm chosenForm) : form(chosenForm) {}

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
        PrintHeading(form, kCaseColumns);
        for (const Case& measured : cases) {
            const RatioLine line = LineOf(measured);
            if (line.ours != 0 && !line.peerName.empty()) PrintRatioLine(line, form, kCaseColumns);
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

    TableForm form;
    std::vector<Case> cases;
};

}  // namespace

int RunRatioTable(int argc, char** argv) {
    // Ours come first, so that an argument from outside overrides them.
    std::vector<std::string> arguments = {argv[0]};
    arguments.insert(arguments.end(), std::begin(kTurns), std::end(kTurns));
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    const TableForm form = std::erase(arguments, "--tsv") > 0 ? TableForm::kForPrograms : TableForm::kForPeople;
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 1;
    RatioTable table(form);
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    // Some contenders hold what must not outlive their libraries.
    benchmark::ClearRegisteredBenchmarks();
    return 0;
}

}  // namespace velmora
