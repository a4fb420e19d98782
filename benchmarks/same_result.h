#pragma once

#include <string>
#include <string_view>

namespace velmora {

// A contender that does not give what the others give would make the ratio worthless: throws unless result is what the
// first contender gave for the case.
void RequireTheSame(const std::string& unit, const std::string& caseName, const std::string& contender,
                    std::string_view result);

}  // namespace velmora
