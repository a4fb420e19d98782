#include <algorithm>
#include <vector>

#include "tests/endurance/run_length.h"
#include "tests/endurance/steady_use.h"
#include "tests/provider/encrypted_test.h"
#include "tests/support/csta_answers.h"
#include "tests/support/seeded_bytes.h"

namespace velmora {
namespace {

constexpr size_t kUsualFrames = 1000000;
constexpr size_t kWarmUpBursts = 100;
constexpr size_t kBurstFrames = 500;  // some 120 KB, of which the last is one that the provider answers
constexpr size_t kMostRecordBytes = 3000;
// Each of the provider's four buffers may come to hold a burst once, and then keeps the room, at most twice what it
// needed. Not even the smallest leak is as small: ten bytes a frame.
constexpr size_t kNoiseBytes = 2 * 1024 * 1024;

// A message of a PBX, in any of its kinds and sizes, that the provider does not answer. Some are no XML.
std::string AnyMessage(SeededBytes& random) {
    const std::string text(random.upTo(300), 'x');
    switch (random.upTo(11)) {
        case 0:
            return CallMade("C-" + text, "D-" + text);
        case 1:
            return SessionTimerReset("1800");
        case 2:
            return SessionTimerReset("as long as you like");
        case 3:
            return RequestRefused();
        case 4:
            return CallDelivered(text).substr(0, random.upTo(300));
        case 5:
            return random.take(random.upTo(300));
        case 6:
            return "";
        case 7:
            return "<a b='" + text + "&amp;&#65;&nosuch;'><c/>" + text + "</a></a></b>";
        case 8:
            return "<deep>" + std::string(random.upTo(99), '<') + text;
        default:
            return CallDelivered(text);
    }
}

// Pours frames into one session. The invoke ID of a call makes its answers find their slot.
class ManyFramesTest : public EncryptedTest {
protected:
    ManyFramesTest() {
        // The log is on, and full after its first thousand records.
        registry.Set("loglevel", "5");
        registry.Set("loglength", "1000");
        tls.keepsSent = false;
    }

    // The stream of a burst, cut into what goes into a record each.
    static std::vector<std::string> MakeBurst(uint32_t callId) {
        SeededBytes random(1);
        std::string stream;
        for (size_t frame = 1; frame < kBurstFrames; ++frame) stream += FrameBytes(callId, AnyMessage(random));
        stream += FrameBytes(callId, SessionAccepted("S1", "1800"));
        std::vector<std::string> pieces;
        for (size_t position = 0; position < stream.size(); position += pieces.back().size()) {
            pieces.push_back(stream.substr(position, 1 + random.upTo(kMostRecordBytes - 1)));
        }
        return pieces;
    }

    // Returns when the provider has answered the burst's last frame.
    void Pour(const std::vector<std::string>& burst) {
        for (const std::string& piece : burst) ASSERT_TRUE(pbx.SendStream(piece));
        ASSERT_TRUE(pbx.WaitForFrames(1));
        ASSERT_EQ(MonitorStarts(), 1U);
        pbx.Forget();
    }

    void PourTimes(const std::vector<std::string>& burst, size_t times) {
        for (size_t count = 0; count < times && !HasFailure(); ++count) Pour(burst);
    }
};

TEST_F(ManyFramesTest, LeaveNothingBehind) {
    const size_t bursts = RunLength("VELMORA_FRAMES", kUsualFrames) / kBurstFrames;
    LogIn();
    const HDRVCALL call = MakeCall(L"4711");
    const uint32_t callId = WaitForMakeCall("4711");
    const std::vector<std::string> burst = MakeBurst(callId);
    pbx.Forget();
    PourTimes(burst, kWarmUpBursts);
    const SteadyUse use;
    PourTimes(burst, bursts);
    use.ExpectUnchanged("frames", bursts * kBurstFrames, kNoiseBytes);

    SendAndWait(callId, CallMade("C-last", "D-last"));
    EXPECT_EQ(ElementText(CloseCall(call), "callID"), "C-last");
    EXPECT_EQ(MonitorStarts(), 1U) << "the provider has answered what was no login";
}

}  // namespace
}  // namespace velmora
