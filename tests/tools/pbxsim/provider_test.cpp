// The provider's own requests and dispatch on one end, the PBX on the other, joined by frames: each judges the other.

#include <gtest/gtest.h>

#include "config/settings.h"
#include "csta/dispatch.h"
#include "csta/framing.h"
#include "csta/requests.h"
#include "tests/support/recorded_link.h"
#include "tools/pbxsim/client.h"

namespace velmora::pbxsim {
namespace {

constexpr uint64_t kNowMs = 1000000;

struct BoundCall {
    uint32_t invokeId;
    ByteString callId;
    ByteString deviceId;
};

std::vector<BoundCall> boundCalls;

void Bind(uint32_t invokeId, const ByteString& callId, const ByteString& deviceId) {
    boundCalls.push_back({invokeId, callId, deviceId});
}

class ProviderTest : public testing::Test {
protected:
    ProviderTest() {
        recordedLink = {};
        boundCalls.clear();
        settings = {};
        settings.username = "40";
        settings.domain = "example.com";
        pbx.behaviour.user = "40";
        pbx.behaviour.password = "secret";
        pbx.behaviour.domain = "example.com";
    }

    // Carries requests there and answers back until both ends rest; the lines that the PBX prints.
    std::vector<ByteString> Exchange() {
        std::vector<ByteString> lines;
        while (carried < recordedLink.sent.size()) {
            const ByteString& request = recordedLink.sent[carried++];
            client.Receive(EncodeFrame(static_cast<uint32_t>(carried), request), kNowMs);
            const Output output = client.TakeOutput(kNowMs);
            lines.insert(lines.end(), output.lines.begin(), output.lines.end());
            for (const ByteString& frame : output.frames) Deliver(frame);
        }
        return lines;
    }

    static void Deliver(const ByteString& bytes) {
        FrameCutter cutter;
        cutter.Append(bytes);
        const std::optional<Frame> frame = cutter.Next();
        ASSERT_TRUE(frame);
        Dispatch(frame->invokeId, frame->xml, Bind);
    }

    Pbx pbx;
    Client client{pbx};
    size_t carried = 0;  // requests that the PBX has had
};

TEST_F(ProviderTest, LogsInMonitorsCallsClearsAndRenews) {
    StartApplicationSession("example.com", "40", "secret");
    EXPECT_EQ(Exchange(), (std::vector<ByteString>{
                              "<- StartApplicationSession  #1  user 40, domain example.com",
                              "-> StartApplicationSessionPosResponse  #1  session 1, for 1800 s",
                              "<- MonitorStart  #2  device 40@example.com",
                              "-> MonitorStartResponse  #2  monitor 1",
                          }));
    ASSERT_EQ(recordedLink.armed.size(), 1U);
    EXPECT_EQ(recordedLink.armed[0].durationSeconds, 1800);

    const uint32_t invokeId = MakeCall("40@example.com", "*1#", "doNotPrompt");
    Exchange();
    ASSERT_EQ(boundCalls.size(), 1U);
    EXPECT_EQ(boundCalls[0].invokeId, invokeId);
    EXPECT_EQ(boundCalls[0].deviceId, "40@example.com");

    ClearConnection(boundCalls[0].callId, boundCalls[0].deviceId);
    EXPECT_EQ(Exchange().back(), "-> ClearConnectionResponse  #4");

    ResetApplicationSessionTimer(recordedLink.armed[0].sessionId);
    Exchange();
    EXPECT_EQ(recordedLink.armed.size(), 2U);
}

TEST_F(ProviderTest, StaysOutWithAWrongPassword) {
    StartApplicationSession("example.com", "40", "Secret");
    Exchange();
    EXPECT_TRUE(recordedLink.armed.empty());
    EXPECT_EQ(recordedLink.sent.size(), 1U);
}

TEST_F(ProviderTest, BindsNoCallThatIsRefused) {
    pbx.behaviour.errorOnMakeCall = true;
    StartApplicationSession("example.com", "40", "secret");
    Exchange();
    MakeCall("40@example.com", "100", "");
    EXPECT_EQ(Exchange().back(), "-> CSTAErrorCode  #3  generic (every call is refused)");
    EXPECT_TRUE(boundCalls.empty());
}

}  // namespace
}  // namespace velmora::pbxsim
