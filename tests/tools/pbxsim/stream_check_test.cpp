#include "tools/pbxsim/stream_check.h"

#include <gtest/gtest.h>

#include "csta/framing.h"

namespace velmora::pbxsim {
namespace {

// A header that claims length, with an invoke ID behind it.
ByteString Header(uint32_t length) {
    return {0, 0, static_cast<char>(length >> 8), static_cast<char>(length & 0xFF), 0, 0, 0, 1};
}

// What Follow says about a stream that comes in two parts.
ByteString FollowInTwo(const ByteString& stream, size_t split) {
    StreamCheck check;
    const ByteString first = check.Follow(stream.substr(0, split));
    return first.empty() ? check.Follow(stream.substr(split)) : first;
}

TEST(StreamCheck, FindsNothingWrongWithFrames) {
    const ByteString stream = EncodeFrame(1, "<a/>") + Header(8) + EncodeFrame(2, ByteString(600, '\x16'));
    for (size_t split = 0; split <= stream.size(); ++split) {
        SCOPED_TRACE(split);
        EXPECT_EQ(FollowInTwo(stream, split), "");
    }
}

TEST(StreamCheck, FindsALengthShorterThanTheHeader) {
    for (uint32_t length = 0; length < 8; ++length) {
        SCOPED_TRACE(length);
        const ByteString stream = EncodeFrame(1, "<a/>") + Header(length);
        for (size_t split = 0; split <= stream.size(); ++split) {
            EXPECT_EQ(FollowInTwo(stream, split),
                      "it sent a frame of " + std::to_string(length) + " bytes, but the header alone has 8");
        }
    }
}

TEST(StreamCheck, RecognisesTlsByItsFirstTwoBytes) {
    EXPECT_EQ(FollowInTwo("\x16\x03\x01", 1),
              "it speaks TLS, but this PBX speaks plain CSTA: set the provider's encrypt to 0, or start this PBX with "
              "--tls");
    EXPECT_EQ(FollowInTwo("\x16\x02\x01", 1), "");
    // Later, the first two bytes of a frame mean nothing.
    EXPECT_EQ(FollowInTwo(EncodeFrame(1, "<a/>") + "\x16\x03\x01", 1), "");
}

}  // namespace
}  // namespace velmora::pbxsim
