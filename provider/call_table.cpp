#include "provider/call_table.h"

namespace velmora {

CallRecord* CallTable::Take() {
    if (handedOut == kCalls) return nullptr;
    return &calls[handedOut++];
}

void CallTable::BindCall(uint32_t invokeId, const ByteString& callId, const ByteString& deviceId) {
    for (CallRecord& call : calls) {
        if (call.invokeId != invokeId) continue;
        call.callId = callId;
        call.deviceId = deviceId;
    }
}

}  // namespace velmora
