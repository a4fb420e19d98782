#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// The five requests that the provider sends (ECMA-354 for the session, ECMA-323 for the calls). Each is a fixed text
// with the values put in as they are: nothing is escaped, so a value with "<" or "&" breaks its message. Keep.

// Opens the application session with the login that the PBX asks for, offering editions 3 to 5 of ECMA-323.
void StartApplicationSession(const ByteString& domain, const ByteString& userName, const ByteString& password);

// Renews the application session.
void ResetApplicationSessionTimer(const ByteString& sessionId);

// Calls a number from a device ("username@domain"). autoOriginate is "doNotPrompt", or empty to leave the element out.
// Returns the invoke ID, under which the PBX will answer.
uint32_t MakeCall(const ByteString& callingDevice, const ByteString& calledDirectoryNumber,
                  const ByteString& autoOriginate);

// Ends the connection of a call, named as the PBX named it in its answer to MakeCall.
void ClearConnection(const ByteString& callId, const ByteString& deviceId);

// Asks for the events of a device ("username@domain").
void MonitorStart(const ByteString& deviceObject);

}  // namespace velmora
