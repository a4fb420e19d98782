#include "crypto/sha1.h"

#include <gtest/gtest.h>

#include "tests/support/hex.h"

namespace velmora {
namespace {

struct Sha1Vector {
    const char* message;
    const char* digest;
};

// FIPS 180-1, appendices A to C, and NIST's "Example Algorithms" for the empty message and for 896 bits.
const Sha1Vector kSha1Vectors[] = {
    {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
    {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
    {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
    {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqrstu",
     "a49b2446a02c645bf419f995b67091253a04a259"},
};

TEST(Sha1, GivesTheDigestsOfFips180) {
    for (const Sha1Vector& vector : kSha1Vectors) {
        SCOPED_TRACE(vector.message);
        EXPECT_EQ(toHex(sha1Digest(vector.message)), vector.digest);
    }
    EXPECT_EQ(toHex(sha1Digest(ByteString(1000000, 'a'))), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

struct LengthVector {
    size_t length;  // of a message of as many letters a
    const char* digest;
};

// sha1sum of GNU coreutils.
const LengthVector kLengthVectors[] = {
    {0, "da39a3ee5e6b4b0d3255bfef95601890afd80709"},   {1, "86f7e437faa5a7fce15d1ddcb9eaeaea377667b8"},
    {55, "c1c8bbdc22796e28c0e15163d20899b65621d65a"},  {56, "c2db330f6083854c99d4b5bfb6e8f29f201be699"},
    {57, "f08f24908d682555111be7ff6f004e78283d989a"},  {63, "03f09f5b158a7a8cdad920bddc29b81c18a551f5"},
    {64, "0098ba824b5c16427bd7a1122a5a442a25ec644d"},  {65, "11655326c708d70319be2610e8a57d9a5b959d3b"},
    {119, "ee971065aaa017e0632a8ca6c77bb3bf8b1dfc56"}, {120, "f34c1488385346a55709ba056ddd08280dd4c6d6"},
    {127, "89d95fa32ed44a7c610b7ee38517ddf57e0bb975"}, {128, "ad5b3fdbcb526778c2839d2f151ea753995e26a0"},
    {129, "d96debf1bdcbc896e6c134ea76e8141f40d78536"},
};

TEST(Sha1, PadsMessagesThatEndAroundTheEndOfABlock) {
    for (const LengthVector& vector : kLengthVectors) {
        SCOPED_TRACE(vector.length);
        EXPECT_EQ(toHex(sha1Digest(ByteString(vector.length, 'a'))), vector.digest);
    }
}

}  // namespace
}  // namespace velmora
