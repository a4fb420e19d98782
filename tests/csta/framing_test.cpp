#include "csta/framing.h"

#include <gtest/gtest.h>

#include <vector>

#include "config/settings.h"
#include "tests/support/log_file_fake.h"

namespace velmora {
namespace {

// A frame with an XML of its own, which stays when the cutter takes the next bytes.
struct TakenFrame {
    uint32_t invokeId = 0;
    ByteString xml;

    bool operator==(const TakenFrame&) const = default;
};

using TakenFrames = std::vector<TakenFrame>;

TakenFrames TakeAll(FrameCutter& cutter) {
    TakenFrames frames;
    while (const std::optional<Frame> frame = cutter.Next()) {
        frames.push_back({frame->invokeId, ByteString(frame->xml)});
    }
    return frames;
}

TEST(EncodeFrame, WritesZerosLengthAndInvokeIdBigEndianBeforeTheXml) {
    EXPECT_EQ(EncodeFrame(0x01020304, "<a/>"), ByteString("\0\0\0\x0C\x01\x02\x03\x04<a/>", 12));
    EXPECT_EQ(EncodeFrame(0xFFFFFFFE, ByteString(600, 'x')).substr(0, 8),
              ByteString("\0\0\x02\x60\xFF\xFF\xFF\xFE", 8));
    EXPECT_EQ(EncodeFrame(1, ""), ByteString("\0\0\0\x08\0\0\0\x01", 8));
}

TEST(EncodeFrame, RefusesWhatTheLengthCannotSay) {
    EXPECT_EQ(EncodeFrame(1, ByteString(65527, 'x')).size(), 65535U);
    EXPECT_EQ(EncodeFrame(1, ByteString(65528, 'x')), "");
}

TEST(FrameCutter, CutsTheSameFramesWhereverTheStreamIsSplit) {
    const ByteString stream = EncodeFrame(1, "<a/>") + EncodeFrame(2, "") + EncodeFrame(0x80000000, "<b/>");
    for (size_t split = 0; split <= stream.size(); ++split) {
        SCOPED_TRACE(split);
        FrameCutter cutter;
        cutter.Append(stream.substr(0, split));
        TakenFrames frames = TakeAll(cutter);
        cutter.Append(stream.substr(split));
        for (const TakenFrame& frame : TakeAll(cutter)) frames.push_back(frame);
        EXPECT_EQ(frames, (TakenFrames{{1, "<a/>"}, {2, ""}, {0x80000000, "<b/>"}}));
    }
}

TEST(FrameCutter, CutsFramesThatArriveByteByByte) {
    const ByteString stream = EncodeFrame(7, ByteString(300, 'x')) + EncodeFrame(8, "<b/>");
    FrameCutter cutter;
    TakenFrames frames;
    for (const char byte : stream) {
        cutter.Append(ByteString(1, byte));
        for (const TakenFrame& frame : TakeAll(cutter)) frames.push_back(frame);
    }
    EXPECT_EQ(frames, (TakenFrames{{7, ByteString(300, 'x')}, {8, "<b/>"}}));
}

TEST(FrameCutter, KeepsWhatItHasGivenOutUntilTheNextBytes) {
    FrameCutter cutter;
    cutter.Append(EncodeFrame(1, ByteString(300, 'a')) + EncodeFrame(2, ByteString(300, 'b')));
    const std::optional<Frame> first = cutter.Next();
    const std::optional<Frame> second = cutter.Next();
    EXPECT_FALSE(cutter.Next());
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->xml, ByteString(300, 'a'));
    EXPECT_EQ(second->xml, ByteString(300, 'b'));
}

TEST(FrameCutter, IgnoresTheFirstTwoBytes) {
    FrameCutter cutter;
    cutter.Append(ByteString("\xAB\xCD\0\x09\0\0\0\x05z", 9));
    EXPECT_EQ(TakeAll(cutter), (TakenFrames{{5, "z"}}));
}

TEST(FrameCutter, CutsAFrameOfTheGreatestLength) {
    FrameCutter cutter;
    cutter.Append(EncodeFrame(1, ByteString(65527, 'x')));
    EXPECT_EQ(TakeAll(cutter), (TakenFrames{{1, ByteString(65527, 'x')}}));
}

TEST(FrameCutter, DropsEverythingHeldWhenALengthDoesNotCoverItsHeader) {
    settings = {};
    settings.logfile = "trace.log";
    settings.loglevel = 1;
    settings.loglength = 1000;
    for (char length = 0; length < 8; ++length) {
        SCOPED_TRACE(static_cast<int>(length));
        const size_t logged = WrittenLog().size();
        FrameCutter cutter;
        cutter.Append(EncodeFrame(1, "<a/>") + ByteString("\0\0\0", 3) + length + ByteString("\0\0\0\x02<b/>", 8) +
                      EncodeFrame(3, "<c/>"));
        EXPECT_EQ(TakeAll(cutter), (TakenFrames{{1, "<a/>"}}));
        EXPECT_NE(WrittenLog().find(":1 Received a frame shorter than its header", logged), ByteString::npos);

        cutter.Append(EncodeFrame(4, "<d/>"));
        EXPECT_EQ(TakeAll(cutter), (TakenFrames{{4, "<d/>"}}));
    }
}

TEST(FrameCutter, ForgetsEverythingWhenCleared) {
    FrameCutter cutter;
    cutter.Append(EncodeFrame(1, "<a/>").substr(0, 10));
    cutter.Clear();
    cutter.Append(EncodeFrame(2, "<b/>"));
    EXPECT_EQ(TakeAll(cutter), (TakenFrames{{2, "<b/>"}}));
}

}  // namespace
}  // namespace velmora
