#pragma once

#include <string>
#include <vector>

#include "benchmarks/targets.h"

namespace velmora {

// A line of a table of ratios: a figure of ours beside the best peer's, less being better. Where nothing of others can
// be compared it has no peer, and our figure itself is held against the target.
struct RatioLine {
    std::string unit;  // this and the next as in targets.h
    std::string caseName;
    double ours = 0;
    double peer = 0;
    std::string peerName;        // empty: no peer
    std::string measure = "ns";  // what the two figures count
};

// What targets.h asks of it; the end of kTargets when it asks nothing.
const Target* FindTarget(const std::string& unit, const std::string& caseName);

enum class TableForm {
    kForPeople,    // columns under a heading
    kForPrograms,  // for ./bench: no heading, a tab between any two columns
};

// What every program of the table can be told.
struct TableOptions {
    TableForm form = TableForm::kForPeople;
    int repetitions = 0;  // 0: as many as the program chooses
};

// Takes "--tsv" or "--benchmark_repetitions=N", named as Google Benchmark does. False for any other argument.
bool TakeOption(const std::string& argument, TableOptions& options);

// Columns: unit, case, our figure, the peer's, the peer's name, the ratio, good, moonshot (both empty without a
// target), and for programs what the figures count, for people what has been reached.
void PrintHeading(TableForm form, int caseColumns);
void PrintRatioLine(const RatioLine& line, TableForm form, int caseColumns);

// The value that this part of the values (0 to below 1) is smaller than: 0.5 gives the median. Of none: 0.
double Quantile(std::vector<double> values, double part);

}  // namespace velmora
