#include "tls/transcript.h"

#include <gtest/gtest.h>

#include "tests/support/hex.h"

namespace velmora {
namespace {

// RFC 1321, A.5, and FIPS 180-1, appendix A.
constexpr char kMd5OfAbc[] = "900150983cd24fb0d6963f7d28e17f72";
constexpr char kSha1OfAbc[] = "a9993e364706816aba3e25717850c26c9cd0d89d";

TEST(Transcript, IsTheDigestsOfNothingAtTheStart) {
    EXPECT_EQ(toHex(Transcript().md5.digest()), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(toHex(Transcript().sha1.digest()), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST(Transcript, TakesMessagesAsOneStringOfBytes) {
    Transcript transcript;
    transcript.Append("a");
    transcript.Append("");
    transcript.Append("bc");
    EXPECT_EQ(toHex(transcript.md5.digest()), kMd5OfAbc);
    EXPECT_EQ(toHex(transcript.sha1.digest()), kSha1OfAbc);
}

TEST(Transcript, GoesOnAfterItsDigestsHaveBeenTaken) {
    Transcript transcript;
    transcript.Append("ab");
    static_cast<void>(transcript.md5.digest() + transcript.sha1.digest());
    transcript.Append("c");
    EXPECT_EQ(toHex(transcript.md5.digest()), kMd5OfAbc);
    EXPECT_EQ(toHex(transcript.sha1.digest()), kSha1OfAbc);
}

}  // namespace
}  // namespace velmora
