#pragma once

#include <cstdint>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// Called for the PBX's answer to MakeCall: binds every call placed under invokeId to the PBX's names for it.
using BindCallFunction = void (*)(uint32_t invokeId, const ByteString& callId, const ByteString& deviceId);

// Applies the effect of one received message. Only answers have one: the session's start arms the keepalive and begins
// monitoring, its renewal re-arms the keepalive, an answer to MakeCall goes to bindCall. Every event, error and unknown
// message changes nothing.
//
// A granted duration that is no number throws std::invalid_argument, one outside 32 bits std::out_of_range (see
// ParseInt); the message has then had no effect.
void Dispatch(uint32_t invokeId, std::string_view xml, BindCallFunction bindCall);

}  // namespace velmora
