// What the PBX sends, in chunks: frames are cut, and each message has its effect on a table of calls and a link that
// only records.
#include <optional>
#include <stdexcept>

#include "csta/dispatch.h"
#include "csta/framing.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "provider/call_table.h"
#include "tests/support/recorded_link.h"

namespace velmora {
namespace {

CallTable calls;

void BindCall(uint32_t invokeId, const ByteString& callId, const ByteString& deviceId) {
    calls.BindCall(invokeId, callId, deviceId);
}

void Receive(FrameCutter& cutter, size_t& handedOut) {
    while (const std::optional<Frame> frame = cutter.Next()) {
        handedOut += kFrameHeaderBytes + frame->xml.size();
        try {
            Dispatch(frame->invokeId, frame->xml, BindCall);
        } catch (const std::logic_error&) {
            // A granted duration that is no number; the session thread takes it in the same way.
        }
    }
}

}  // namespace
}  // namespace velmora

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    recordedLink = {};
    calls = {};
    for (uint32_t invokeId = 1; CallRecord* call = calls.Take(); ++invokeId) call->invokeId = invokeId;

    FuzzInput input(data, bytes);
    const size_t chunkBytes = 1U + input.U8();
    FrameCutter cutter;
    size_t handedOut = 0;
    while (!input.AtEnd()) {
        cutter.Append(input.Bytes(chunkBytes));
        Receive(cutter, handedOut);
    }
    Expect(handedOut <= bytes, "no more comes out of the stream than went in");
    for (const RecordedLink::Armed& armed : recordedLink.armed) {
        Expect(armed.durationSeconds > 0, "the keepalive is armed for a time");
    }
    return 0;
}
