#include "tests/support/recorded_link.h"

#include "csta/link.h"

namespace velmora {

RecordedLink recordedLink;

uint32_t SendRequest(const ByteString& xml) {
    recordedLink.sent.push_back(xml);
    return recordedLink.nextInvokeId++;
}

void ArmKeepalive(const ByteString& sessionId, int32_t durationSeconds) {
    recordedLink.armed.push_back({sessionId, durationSeconds});
}

}  // namespace velmora
