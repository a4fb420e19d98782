#include "tools/pbxsim/channel.h"

#include <gtest/gtest.h>

#include "tests/support/tls_identity.h"
#include "tests/tools/pbxsim/requests.h"

namespace velmora::pbxsim {
namespace {

constexpr uint64_t kNowMs = 1000000;

using Lines = std::vector<ByteString>;

class ChannelTest : public testing::Test {
protected:
    ChannelTest() {
        UseTlsIdentity("rsa1024");
        client.verifyCertificates = false;
    }

    // Gives bytes to a channel; its lines are appended, its chunks come back joined.
    ByteString Take(Channel& channel, const ByteString& bytes, uint64_t nowMs = kNowMs) {
        channel.Receive(bytes, nowMs);
        const ChannelOutput output = channel.TakeOutput(nowMs);
        lines.insert(lines.end(), output.lines.begin(), output.lines.end());
        hungUp = hungUp || output.hangUp;
        ByteString joined;
        for (const ByteString& chunk : output.chunks) joined += chunk;
        return joined;
    }

    // Makes the client's first request, which takes the handshake with it, and carries bytes until both ends rest.
    void Request(Channel& channel, const ByteString& xml) {
        ByteString toPbx = client.Send(EncodeFrame(++invokeId, xml));
        while (!toPbx.empty()) {
            cutter.Append(client.Feed(Take(channel, toPbx)));
            toPbx = client.Send({});
        }
    }

    Pbx pbx;
    TlsConnection client;
    FrameCutter cutter;
    uint32_t invokeId = 0;
    Lines lines;
    bool hungUp = false;
};

TEST_F(ChannelTest, ServesAPlainClientAsItIs) {
    Channel channel(pbx, Encryption::kNone);
    cutter.Append(Take(channel, EncodeFrame(7, Login())));
    const std::optional<Frame> answer = cutter.Next();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->invokeId, 7U);
    EXPECT_EQ(lines.size(), 2U);
}

TEST_F(ChannelTest, ServesAnEncryptedClientAndSaysSoBeforeItsFirstMessage) {
    Channel channel(pbx, Encryption::kTls);
    client.StartClientHandshake();
    Request(channel, Login());
    Request(channel, MakeCall("40@example.com", "100"));
    EXPECT_EQ(lines, (Lines{"-- encrypted: TLS 1.0, AES128-SHA, new session",
                            "<- StartApplicationSession  #1  user 40, domain example.com",
                            "-> StartApplicationSessionPosResponse  #1  session 1, for 1800 s",
                            "<- MakeCall  #2  from 40@example.com, to 100",
                            "-> MakeCallResponse  #2  call 1, device 40@example.com"}));
    for (const uint32_t expected : {1U, 2U}) {
        const std::optional<Frame> answer = cutter.Next();
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->invokeId, expected);
    }
    EXPECT_FALSE(hungUp);
}

TEST_F(ChannelTest, EncryptsWhatIsDueByTheClock) {
    pbx.behaviour.sessionSeconds = 5;
    Channel channel(pbx, Encryption::kTls);
    client.StartClientHandshake();
    Request(channel, Login());
    ASSERT_TRUE(cutter.Next());
    EXPECT_EQ(channel.NextDueMs(), kNowMs + 5000);
    cutter.Append(client.Feed(Take(channel, {}, kNowMs + 5000)));
    EXPECT_EQ(XmlNode(cutter.Next().value_or(Frame()).xml, true).localName, "ApplicationSessionTerminated");
    EXPECT_TRUE(hungUp);
    EXPECT_EQ(lines.back(), "-- hanging up: its session has ended");
    EXPECT_EQ(channel.NextDueMs(), std::nullopt);
}

TEST_F(ChannelTest, HangsUpOnceWhenTlsFails) {
    Channel channel(pbx, Encryption::kTls);
    EXPECT_EQ(Take(channel, EncodeFrame(1, Login())), "");
    EXPECT_TRUE(hungUp);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].starts_with("-- hanging up: it speaks plain CSTA")) << lines[0];
    EXPECT_EQ(Take(channel, EncodeFrame(2, Login())), "");
    EXPECT_EQ(lines.size(), 1U);
}

TEST_F(ChannelTest, SendsTheAlertBeforeItHangsUp) {
    Channel channel(pbx, Encryption::kTlsRefused);
    client.StartClientHandshake();
    Request(channel, Login());
    EXPECT_TRUE(client.PeerAlertReceived());
    EXPECT_TRUE(hungUp);
    EXPECT_EQ(lines, (Lines{"-- hanging up: every TLS handshake is refused; sent the alert handshake_failure (40)"}));
}

TEST_F(ChannelTest, HangsUpOnTlsWithoutEncryption) {
    Channel channel(pbx, Encryption::kNone);
    client.StartClientHandshake();
    EXPECT_EQ(Take(channel, client.Send({})), "");
    EXPECT_TRUE(hungUp);
    EXPECT_EQ(lines,
              (Lines{"-- hanging up: it speaks TLS, but this PBX speaks plain CSTA: set the provider's encrypt to 0, "
                     "or start this PBX with --tls"}));
}

TEST_F(ChannelTest, HangsUpOnABadFrameInsideTls) {
    Channel channel(pbx, Encryption::kTls);
    client.StartClientHandshake();
    Request(channel, Login());
    Take(channel, client.Send(ByteString(8, '\0')));
    EXPECT_TRUE(hungUp);
    EXPECT_EQ(lines.back(), "-- hanging up: it sent a frame of 0 bytes, but the header alone has 8");
}

}  // namespace
}  // namespace velmora::pbxsim
