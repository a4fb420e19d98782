#pragma once

#include <string>

namespace velmora {

// What a PBX answers, as it would write it (ECMA-354 for the session, ECMA-323 for calls).

// The login is accepted. The duration is what the PBX grants, in seconds, as text so that a test may give no number.
std::string SessionAccepted(const std::string& sessionId, const std::string& duration);

// The session has been prolonged.
std::string SessionTimerReset(const std::string& duration);

// The call has been placed.
std::string CallMade(const std::string& callId, const std::string& deviceId);

// A request was refused.
std::string RequestRefused();

// An event of the monitor: a call was delivered to a device.
std::string CallDelivered(const std::string& callId);

}  // namespace velmora
