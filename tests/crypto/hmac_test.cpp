#include "crypto/hmac.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "crypto/hmac_key.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"
#include "tests/support/hex.h"

namespace velmora {
namespace {

struct HmacVector {
    const char* source;
    ByteString key;
    ByteString data;
    const char* digest;
};

const ByteString kCountingKey = fromHex("0102030405060708090a0b0c0d0e0f10111213141516171819");

const HmacVector kHmacMd5Vectors[] = {
    {"RFC 2202, 2, test case 1", ByteString(16, '\x0b'), "Hi There", "9294727a3638bb1c13f48ef8158bfc9d"},
    {"RFC 2202, 2, test case 2", "Jefe", "what do ya want for nothing?", "750c783e6ab0b503eaa86e310a5db738"},
    {"RFC 2202, 2, test case 3", ByteString(16, '\xaa'), ByteString(50, '\xdd'), "56be34521d144c88dbb8c733f0e8b3f6"},
    {"RFC 2202, 2, test case 4", kCountingKey, ByteString(50, '\xcd'), "697eaf0aca3a3aea3a75164746ffaa79"},
    {"RFC 2202, 2, test case 5", ByteString(16, '\x0c'), "Test With Truncation", "56461ef2342edc00f9bab995690efd4c"},
};

const HmacVector kHmacSha1Vectors[] = {
    {"RFC 2202, 3, test case 1", ByteString(20, '\x0b'), "Hi There", "b617318655057264e28bc0b6fb378c8ef146be00"},
    {"RFC 2202, 3, test case 2", "Jefe", "what do ya want for nothing?", "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79"},
    {"RFC 2202, 3, test case 3", ByteString(20, '\xaa'), ByteString(50, '\xdd'),
     "125d7342b9ac11cd91a39af48aa17b4f63f175d3"},
    {"RFC 2202, 3, test case 4", kCountingKey, ByteString(50, '\xcd'), "4c9007f4026250c6bc8414f9bf50c86c2d7235da"},
    {"RFC 2202, 3, test case 5", ByteString(20, '\x0c'), "Test With Truncation",
     "4c1a03424b55e07fe7f27be1d58bb9324a9a5a04"},
};

TEST(HmacMd5, GivesTheDigestsOfRfc2202) {
    for (const HmacVector& vector : kHmacMd5Vectors) {
        SCOPED_TRACE(vector.source);
        EXPECT_EQ(toHex(hmacMd5(vector.key, vector.data)), vector.digest);
    }
}

TEST(HmacSha1, GivesTheDigestsOfRfc2202) {
    for (const HmacVector& vector : kHmacSha1Vectors) {
        SCOPED_TRACE(vector.source);
        EXPECT_EQ(toHex(hmacSha1(vector.key, vector.data)), vector.digest);
    }
}

// RFC 2104, section 2, in its own words.
TEST(Hmac, UsesAKeyOfExactly64BytesUnhashed) {
    const ByteString key = ByteString(63, 'k') + 'l';
    ByteString innerPad;
    ByteString outerPad;
    for (const char byte : key) {
        innerPad += static_cast<char>(byte ^ 0x36);
        outerPad += static_cast<char>(byte ^ 0x5C);
    }
    EXPECT_EQ(hmacMd5(key, "data"), md5Digest(outerPad + md5Digest(innerPad + "data")));
    EXPECT_EQ(hmacSha1(key, "data"), sha1Digest(outerPad + sha1Digest(innerPad + "data")));
}

TEST(Hmac, TakesAnEmptyKeyForZeros) {
    EXPECT_EQ(hmacMd5("", "data"), hmacMd5(ByteString(64, '\0'), "data"));
    EXPECT_EQ(hmacSha1("", "data"), hmacSha1(ByteString(64, '\0'), "data"));
}

TEST(Hmac, RefusesAKeyOfMoreThan64Bytes) {
    EXPECT_THROW(hmacMd5(ByteString(65, 'k'), "data"), std::invalid_argument);
    EXPECT_THROW(hmacSha1(ByteString(65, 'k'), "data"), std::invalid_argument);
    EXPECT_NO_THROW(hmacMd5(ByteString(64, 'k'), "data"));
    EXPECT_NO_THROW(hmacSha1(ByteString(64, 'k'), "data"));
}

TEST(HmacKey, GivesTheDigestOfItsPiecesOneBehindTheOther) {
    const ByteString data(150, 'd');
    const HmacKey<Md5State> md5("key");
    const HmacKey<Sha1State> sha1("key");
    for (size_t split = 0; split <= data.size(); ++split) {
        SCOPED_TRACE(split);
        EXPECT_EQ(md5.digest({data.substr(0, split), "", data.substr(split)}), hmacMd5("key", data));
        EXPECT_EQ(sha1.digest({data.substr(0, split), data.substr(split)}), hmacSha1("key", data));
    }
    EXPECT_EQ(sha1.digest({}), hmacSha1("key", ""));
}

}  // namespace
}  // namespace velmora
