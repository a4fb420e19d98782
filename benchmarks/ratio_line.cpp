#include "benchmarks/ratio_line.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <iterator>

namespace velmora {
namespace {

const char* Verdict(double ratio, const Target& target) {
    if (ratio <= target.moonshot) return "moonshot";
    return ratio <= target.good ? "good" : "MISSED";
}

void PrintForPeople(const RatioLine& line, double ratio, int caseColumns) {
    std::printf("%-21s %-*s %12.7g %12.7g %-8s %-10s %6.2f", line.unit.c_str(), caseColumns, line.caseName.c_str(),
                line.ours, line.peer, line.measure.c_str(), line.peerName.c_str(), ratio);
    if (const Target* target = FindTarget(line.unit, line.caseName); target != std::end(kTargets)) {
        std::printf(" %6.2f %8.2f  %s", target->good, target->moonshot, Verdict(ratio, *target));
    }
    std::printf("\n");
}

void PrintForPrograms(const RatioLine& line, double ratio) {
    std::printf("%s\t%s\t%.7g\t%.7g\t%s\t%.4f", line.unit.c_str(), line.caseName.c_str(), line.ours, line.peer,
                line.peerName.c_str(), ratio);
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

void PrintHeading(TableForm form, int caseColumns) {
    if (form == TableForm::kForPrograms) return;
    std::printf("%-21s %-*s %12s %12s %-8s %-10s %6s %6s %8s\n", "unit", caseColumns, "case", "ours", "peer", "",
                "best peer", "ratio", "good", "moonshot");
}

void PrintRatioLine(const RatioLine& line, TableForm form, int caseColumns) {
    const double ratio = line.ours / line.peer;
    if (form == TableForm::kForPrograms) {
        PrintForPrograms(line, ratio);
    } else {
        PrintForPeople(line, ratio, caseColumns);
    }
}

double Quantile(std::vector<double> values, double part) {
    if (values.empty()) return 0;
    const auto wanted = values.begin() + static_cast<std::ptrdiff_t>(static_cast<double>(values.size()) * part);
    std::nth_element(values.begin(), wanted, values.end());
    return *wanted;
}

}  // namespace velmora
