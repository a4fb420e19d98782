#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// When the application session has to be renewed: at 90 % of the duration that the PBX granted.
class Keepalive {
public:
    // What RemainingMs gives while nothing is due: the wait-forever value of Windows.
    static constexpr uint32_t kForever = 0xFFFFFFFF;

    // Sets the deadline durationSeconds * 900 ms from nowMs, on the 32-bit tick counter. An empty id keeps the stored
    // one.
    void Arm(const ByteString& id, int32_t durationSeconds, uint32_t nowMs);

    // Nothing is due until the next Arm; the session ID stays.
    void Disarm() { armed = false; }

    // Milliseconds until the deadline, as the tick counter's difference: read as a signed number it is 0 or negative
    // when the deadline is reached or over. One millisecond over is kForever, so that renewal waits for the next data
    // received. Keep.
    uint32_t RemainingMs(uint32_t nowMs) const { return armed ? deadlineMs - nowMs : kForever; }

    // Names the session to renew; empty until a PBX has given one.
    const ByteString& SessionId() const { return sessionId; }

private:
    ByteString sessionId;
    bool armed = false;
    uint32_t deadlineMs = 0;  // on the 32-bit tick counter, which wraps after 49.7 days
};

}  // namespace velmora
