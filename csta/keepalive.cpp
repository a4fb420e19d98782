#include "csta/keepalive.h"

namespace velmora {

void Keepalive::Arm(const ByteString& id, int32_t durationSeconds, uint32_t nowMs) {
    constexpr uint32_t kRenewalMsPerSecond = 900;
    if (!id.empty()) sessionId = id;
    deadlineMs = nowMs + static_cast<uint32_t>(durationSeconds) * kRenewalMsPerSecond;
    armed = true;
}

}  // namespace velmora
