#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "config/byte_string.h"
#include "csta/framing.h"
#include "tools/pbxsim/pbx.h"
#include "tools/pbxsim/stream_check.h"

namespace velmora::pbxsim {

// What a client's turn gives.
struct Output {
    std::vector<ByteString> frames;  // to be sent, in this order
    std::vector<ByteString> lines;   // to be printed: one per message, and one when the PBX hangs up
    bool hangUp = false;             // close the connection once the frames are sent; nothing follows
};

// One client of the PBX without its socket: received bytes in, frames and lines out.
class Client {
public:
    explicit Client(Pbx& pbx) : session(pbx) {}

    // Takes received bytes, however they were cut. A stream in which no next frame can be found makes the PBX hang up.
    void Receive(const ByteString& bytes, uint64_t nowMs);

    // What has come together since the last call, and what is due by now.
    Output TakeOutput(uint64_t nowMs);

    // When TakeOutput has something next by the clock alone; none when nothing waits.
    std::optional<uint64_t> NextDueMs() const;

private:
    void TakeRequest(const Frame& frame, uint64_t nowMs);
    void SendDue(uint64_t nowMs);
    void HangUp(const ByteString& reason);

    ClientSession session;
    FrameCutter cutter;
    StreamCheck check;
    Output output;
    bool hungUp = false;
};

}  // namespace velmora::pbxsim
