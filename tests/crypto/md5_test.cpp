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

struct LengthVector {
    size_t length;  // of a message of as many letters a
    const char* digest;
};

// md5sum of GNU coreutils.
const LengthVector kLengthVectors[] = {
    {0, "d41d8cd98f00b204e9800998ecf8427e"},   {1, "0cc175b9c0f1b6a831c399e269772661"},
    {55, "ef1772b6dff9a122358552954ad0df65"},  {56, "3b0c8ac703f828b04c6c197006d17218"},
    {57, "652b906d60af96844ebd21b674f35e93"},  {63, "b06521f39153d618550606be297466d5"},
    {64, "014842d480b571495a4a0363793f7367"},  {65, "c743a45e0d2e6a95cb859adae0248435"},
    {119, "8a7bd0732ed6a28ce75f6dabc90e1613"}, {120, "5f61c0ccad4cac44c75ff505e1f1e537"},
    {127, "020406e1d05cdc2aa287641f7ae2cc39"}, {128, "e510683b3f5ffe4093d021808bc6ff70"},
    {129, "b325dc1c6f5e7a2b7cf465b9feab7948"},
};

TEST(Md5, PadsMessagesThatEndAroundTheEndOfABlock) {
    for (const LengthVector& vector : kLengthVectors) {
        SCOPED_TRACE(vector.length);
        EXPECT_EQ(toHex(md5Digest(ByteString(vector.length, 'a'))), vector.digest);
    }
}

}  // namespace
}  // namespace velmora
