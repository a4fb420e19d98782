#include "crypto/cpu_features.h"

namespace velmora {

const CpuFeatures& cpuFeatures() {
    static const CpuFeatures features = detectCpuFeatures();
    return features;
}

}  // namespace velmora
