#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// What requests and dispatch ask of the one link to the PBX. connection.cpp answers on Windows.

// Sends a message as one frame under the next invoke ID, and returns that ID. The IDs count from 1 and are never reset
// in the life of the process. A link that is down, or a message too long for a frame, loses it (the trace log says so).
uint32_t SendRequest(const ByteString& xml);

// Has the session renewed when 90 % of durationSeconds have passed. An empty sessionId keeps the one stored before.
void ArmKeepalive(const ByteString& sessionId, int32_t durationSeconds);

}  // namespace velmora
