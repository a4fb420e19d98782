#include "benchmarks/same_result.h"

#include <map>
#include <stdexcept>
#include <utility>

namespace velmora {

void RequireTheSame(const std::string& unit, const std::string& caseName, const std::string& contender,
                    std::string_view result) {
    static std::map<std::pair<std::string, std::string>, std::string> results;
    const std::string& first = results.try_emplace({unit, caseName}, result).first->second;
    if (result != first) throw std::runtime_error(unit + " " + caseName + ": " + contender + " gives another result");
}

}  // namespace velmora
