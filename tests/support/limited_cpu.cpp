#include <cstdlib>
#include <string_view>

#include "crypto/cpu_features.h"

namespace velmora {
namespace {

// The same tests run with less than the processor has: the environment variable VELMORA_TEST_CPU says "portable" for no
// special instructions, "narrow" for none on registers of 256 bits or more.
CpuFeatures limited() {
    const char* const variable = std::getenv("VELMORA_TEST_CPU");
    const std::string_view limit = variable == nullptr ? "" : variable;
    CpuFeatures features = detectCpuFeatures();
    if (limit == "portable") features = {};
    if (limit == "narrow") features.vaes = features.ifma = false;
    return features;
}

}  // namespace

const CpuFeatures& cpuFeatures() {
    static const CpuFeatures features = limited();
    return features;
}

}  // namespace velmora
