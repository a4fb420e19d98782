#include "tools/pbxsim/client.h"

#include <gtest/gtest.h>

#include "tests/tools/pbxsim/requests.h"

namespace velmora::pbxsim {
namespace {

constexpr uint64_t kNowMs = 1000000;

using Lines = std::vector<ByteString>;

void Append(Output& all, const Output& more) {
    all.frames.insert(all.frames.end(), more.frames.begin(), more.frames.end());
    all.lines.insert(all.lines.end(), more.lines.begin(), more.lines.end());
    all.hangUp = all.hangUp || more.hangUp;
}

// All that a new client of a PBX gives for a stream that comes in two parts.
Output OutputFor(const ByteString& stream, size_t split, const Behaviour& behaviour = {}) {
    Pbx pbx;
    pbx.behaviour = behaviour;
    Client client(pbx);
    Output all;
    for (const ByteString& part : {stream.substr(0, split), stream.substr(split)}) {
        client.Receive(part, kNowMs);
        Append(all, client.TakeOutput(kNowMs));
    }
    return all;
}

TEST(Client, PrintsOneLinePerMessage) {
    const ByteString stream = EncodeFrame(1, Login()) + EncodeFrame(2, MakeCall("40@example.com", "100")) +
                              EncodeFrame(3, "<Strange/>") + EncodeFrame(4, "");
    EXPECT_EQ(OutputFor(stream, 0).lines, (Lines{
                                              "<- StartApplicationSession  #1  user 40, domain example.com",
                                              "-> StartApplicationSessionPosResponse  #1  session 1, for 1800 s",
                                              "<- MakeCall  #2  from 40@example.com, to 100",
                                              "-> MakeCallResponse  #2  call 1, device 40@example.com",
                                              "<- Strange  #3",
                                              "-> CSTAErrorCode  #3  generic (not a request that this PBX knows)",
                                              "<- (no XML)  #4",
                                              "-> CSTAErrorCode  #4  generic (not a request that this PBX knows)",
                                          }));
}

TEST(Client, NeverPrintsAPassword) {
    Behaviour behaviour;
    behaviour.password = "hush";
    for (const char* given : {"hush", "tell"}) {
        for (const ByteString& line : OutputFor(EncodeFrame(1, Login("40", given)), 0, behaviour).lines) {
            EXPECT_EQ(line.find("hush"), ByteString::npos) << line;
            EXPECT_EQ(line.find("tell"), ByteString::npos) << line;
        }
    }
}

TEST(Client, GivesTheSameWhereverTheStreamIsSplit) {
    const ByteString stream = EncodeFrame(1, Login()) + EncodeFrame(2, MonitorStart("40@example.com")) +
                              EncodeFrame(0xFFFFFFFF, MakeCall("40@example.com", "100"));
    const Output whole = OutputFor(stream, 0);
    ASSERT_EQ(whole.frames.size(), 3U);
    for (size_t split = 1; split <= stream.size(); ++split) {
        SCOPED_TRACE(split);
        const Output output = OutputFor(stream, split);
        EXPECT_EQ(output.frames, whole.frames);
        EXPECT_EQ(output.lines, whole.lines);
    }
}

TEST(Client, SendsFramesThatCarryTheInvokeId) {
    const Output output = OutputFor(EncodeFrame(0x01020304, Login()), 0);
    ASSERT_EQ(output.frames.size(), 1U);
    FrameCutter cutter;
    cutter.Append(output.frames[0]);
    const std::optional<Frame> frame = cutter.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->invokeId, 0x01020304U);
    EXPECT_EQ(XmlNode(frame->xml, true).localName, "StartApplicationSessionPosResponse");
}

TEST(Client, HangsUpOnAFrameShorterThanItsHeaderAfterAnsweringThoseBefore) {
    const ByteString stream = EncodeFrame(1, Login()) + ByteString("\0\0\0\7\0\0\0\2", 8) + EncodeFrame(3, Login());
    for (size_t split = 0; split <= stream.size(); ++split) {
        SCOPED_TRACE(split);
        const Output output = OutputFor(stream, split);
        EXPECT_TRUE(output.hangUp);
        EXPECT_EQ(output.frames.size(), 1U);
        ASSERT_EQ(output.lines.size(), 3U);
        EXPECT_EQ(output.lines[2], "-- hanging up: it sent a frame of 7 bytes, but the header alone has 8");
    }
}

TEST(Client, HangsUpWhenItsSessionHasEnded) {
    Pbx pbx;
    pbx.behaviour.sessionSeconds = 5;
    Client client(pbx);
    client.Receive(EncodeFrame(1, Login()), kNowMs);
    EXPECT_FALSE(client.TakeOutput(kNowMs).hangUp);
    EXPECT_EQ(client.NextDueMs(), kNowMs + 5000);
    // The request comes too late, but the end of the session still goes out, once.
    client.Receive(EncodeFrame(2, MonitorStart("40")), kNowMs + 5000);
    const Output last = client.TakeOutput(kNowMs + 5000);
    EXPECT_TRUE(last.hangUp);
    EXPECT_EQ(last.frames.size(), 1U);
    EXPECT_EQ(last.lines, (Lines{"-> ApplicationSessionTerminated  #9999  session 1 (not renewed in time)",
                                 "-- hanging up: its session has ended"}));
    EXPECT_EQ(client.NextDueMs(), std::nullopt);
    client.Receive(EncodeFrame(3, Login()), kNowMs + 5000);
    EXPECT_TRUE(client.TakeOutput(kNowMs + 5000).lines.empty());
}

// Every message cut short at every length, and changed in one byte at every place: a frame more or less, never harm.
TEST(Client, AnswersEveryDamagedRequest) {
    const ByteString requests[] = {Login(), ResetTimer("1"), MonitorStart("40"), MakeCall("40", "100", "doNotPrompt"),
                                   ClearConnection("1", "40")};
    for (const ByteString& request : requests) {
        for (size_t place = 0; place < request.size(); ++place) {
            for (const char byte : {'<', '>', '&', '\0', '\xFF', '/', '"'}) {
                ByteString damaged = request;
                damaged[place] = byte;
                const ByteString stream = EncodeFrame(1, Login()) + EncodeFrame(2, damaged);
                EXPECT_EQ(OutputFor(stream, 0).frames.size(), 2U) << damaged;
            }
            const ByteString stream = EncodeFrame(1, Login()) + EncodeFrame(2, request.substr(0, place));
            EXPECT_EQ(OutputFor(stream, 0).frames.size(), 2U) << place;
        }
    }
}

TEST(Client, SurvivesTheDeepestNestingThatAFrameCanHold) {
    ByteString deep;
    while (deep.size() + 3 <= kFrameMaxBytes - kFrameHeaderBytes) deep += "<a>";
    const Output output = OutputFor(EncodeFrame(1, deep), 0);
    EXPECT_EQ(output.frames.size(), 1U);
}

}  // namespace
}  // namespace velmora::pbxsim
