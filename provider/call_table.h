#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// One call that TAPI placed. Its address is the provider's handle for the call.
struct CallRecord {
    uint32_t invokeId = 0;           // of its MakeCall request; 0 until one was sent
    bool inUse = false;              // from TSPI_lineMakeCall to TSPI_lineCloseCall
    ByteString deviceId;             // the calling device, then the device that the PBX's answer names
    ByteString callId;               // empty until the PBX's answer names it
    const void* tapiCall = nullptr;  // TAPI's handle for the call (HTAPICALL)
};

// Every call in the life of the process, at most ten: records are handed out in order and never again. Keep.
//
// TAPI's threads and the session thread use it under the lock of the CSTA connection.
class CallTable {
public:
    static constexpr size_t kCalls = 10;

    // The next record that was never used; null when there is none left.
    CallRecord* Take();

    // Names the call placed under invokeId as the PBX does. All records with that ID are bound, in use or not; an ID of
    // 0 therefore binds every one never used. Keep.
    void BindCall(uint32_t invokeId, const ByteString& callId, const ByteString& deviceId);

private:
    std::array<CallRecord, kCalls> calls;
    size_t handedOut = 0;  // calls[0] to calls[handedOut - 1] have been taken
};

}  // namespace velmora
