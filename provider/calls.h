#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// Gives the calls placed under invokeId the names that the PBX's answer to MakeCall has for them (see
// CallTable::BindCall). Under the lock of the CSTA connection.
void BindPlacedCall(uint32_t invokeId, const ByteString& callId, const ByteString& deviceId);

}  // namespace velmora
