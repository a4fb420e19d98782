#include "benchmarks/ratio_line.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace velmora {
namespace {

const char* Verdict(double judged, const Target& target) {
    if (judged <= target.moonshot) return "moonshot";
    return judged <= target.good ? "good" : "MISSED";
}

void PrintForPeople(const RatioLine& line, int caseColumns) {
    std::printf("%-21s %-*s %12.7g ", line.unit.c_str(), caseColumns, line.caseName.c_str(), line.ours);
    if (line.peerName.empty()) {
        std::printf("%12s %-8s %-10s %6s", "", line.measure.c_str(), "", "");
    } else {
        std::printf("%12.7g %-8s %-10s %6.2f", line.peer, line.measure.c_str(), line.peerName.c_str(),
                    line.ours / line.peer);
    }
    if (const Target* target = FindTarget(line.unit, line.caseName); target != std::end(kTargets)) {
        const double judged = line.peerName.empty() ? line.ours : line.ours / line.peer;
        std::printf(" %6.2f %8.2f  %s", target->good, target->moonshot, Verdict(judged, *target));
    }
    std::printf("\n");
}

void PrintForPrograms(const RatioLine& line) {
    std::printf("%s\t%s\t%.7g\t", line.unit.c_str(), line.caseName.c_str(), line.ours);
    if (line.peerName.empty()) {
        std::printf("\t\t");
    } else {
        std::printf("%.7g\t%s\t%.4f", line.peer, line.peerName.c_str(), line.ours / line.peer);
    }
    if (const Target* target = FindTarget(line.unit, line.caseName); target != std::end(kTargets)) {
        std::printf("\t%g\t%g", target->good, target->moonshot);
    } else {
        std::printf("\t\t");
    }
    std::printf("\t%s\n", line.measure.c_str());
}

}  // namespace

const Target* FindTarget(const std::string& unit, const std::string& caseName) {
    return std::find_if(std::begin(kTargets), std::end(kTargets),
                        [&](const Target& target) { return unit == target.unit && caseName == target.caseName; });
}

bool TakeOption(const std::string& argument, TableOptions& options) {
    if (argument == "--tsv") {
        options.form = TableForm::kForPrograms;
        return true;
    }
    const std::string repetitions = "--benchmark_repetitions=";
    if (!argument.starts_with(repetitions)) return false;
    options.repetitions = static_cast<int>(std::strtol(argument.c_str() + repetitions.size(), nullptr, 10));
    return options.repetitions > 0;
}

void PrintHeading(TableForm form, int caseColumns) {
    if (form == TableForm::kForPrograms) return;
    std::printf("%-21s %-*s %12s %12s %-8s %-10s %6s %6s %8s\n", "unit", caseColumns, "case", "ours", "peer", "",
                "best peer", "ratio", "good", "moonshot");
}

void PrintRatioLine(const RatioLine& line, TableForm form, int caseColumns) {
    if (form == TableForm::kForPrograms) {
        PrintForPrograms(line);
    } else {
        PrintForPeople(line, caseColumns);
    }
}

double Quantile(std::vector<double> values, double part) {
    if (values.empty()) return 0;
    const auto wanted = values.begin() + static_cast<std::ptrdiff_t>(static_cast<double>(values.size()) * part);
    std::nth_element(values.begin(), wanted, values.end());
    return *wanted;
}

}  // namespace velmora
