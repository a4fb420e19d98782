#include "crypto/md5.h"

#include <gtest/gtest.h>

#include "tests/support/hex.h"

namespace velmora {
namespace {

struct Md5Vector {
    const char* message;
    const char* digest;
};

// RFC 1321, appendix A.5.
const Md5Vector kMd5Vectors[] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "57edf4a22be3c955ac49da2e2107b67a"},
};

TEST(Md5, GivesTheDigestsOfRfc1321) {
    for (const Md5Vector& vector : kMd5Vectors) {
        SCOPED_TRACE(vector.message);
        EXPECT_EQ(toHex(md5Digest(vector.message)), vector.digest);
    }
}

TEST(Md5, GivesTheSameDigestWhereverTheMessageIsSplit) {
    ByteString message;
    for (int index = 0; index < 200; ++index) message += static_cast<char>(index);
    const ByteString whole = md5Digest(message);
    for (size_t split = 0; split <= message.size(); ++split) {
        SCOPED_TRACE(split);
        Md5State state;
        state.update(message.substr(0, split));
        EXPECT_EQ(state.digest(), md5Digest(message.substr(0, split)));
        state.update(message.substr(split));
        EXPECT_EQ(state.digest(), whole);
    }
}

TEST(Md5, CountsTheCarryFromTheLowWordOfTheLengthIntoTheHighOne) {
    Md5State state;
    state.bitCount[0] = 0xFFFFFE00;
    state.update(ByteString(64, 'x'));
    EXPECT_EQ(state.bitCount[0], 0U);
    EXPECT_EQ(state.bitCount[1], 1U);
}

}  // namespace
}  // namespace velmora
