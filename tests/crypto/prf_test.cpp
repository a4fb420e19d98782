#include "crypto/prf.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "crypto/hmac.h"
#include "tests/support/hex.h"

namespace velmora {
namespace {

struct PrfVector {
    const char* label;
    const char* secret;
    const char* seed;
    const char* output;
};

// NIST, "Application-Specific Key Derivation Function Validation System", the first case of its TLS 1.0/1.1 vectors.
const PrfVector kPrfVectors[] = {
    {"master secret",
     "bded7fa5c1699c010be23dd06ada3a48349f21e5f86263d512c0c5cc379f0e780ec55d9844b2f1db02a96453513568d0",
     "e5acaf549cd25c22d964c0d930fa4b5261d2507fad84c33715b7b9a864020693"
     "135e4d557fdf3aa6406d82975d5c606a9734c9334b42136e96990fbd5358cdb2",
     "2f6962dfbc744c4b2138bb6b3d33054c5ecc14f24851d9896395a44ab3964efc2090c5bf51a0891209f46c1e1e998f62"},
    {"key expansion",
     "2f6962dfbc744c4b2138bb6b3d33054c5ecc14f24851d9896395a44ab3964efc2090c5bf51a0891209f46c1e1e998f62",
     "67267e650eb32444119d222a368c191af3082888dc35afe8368e638c828874be"
     "d58a7b1cd4fedaa232159df652ce188f9d997e061b9bf48e83b62990440931f6",
     "3088825988e77fce68d19f756e18e43eb7fe672433504feaf99b3c503d9091b164f166db301d70c9fc0870b4a94563907bee1a61fb786cb7"
     "17576890bcc51cb9ead97e01d0a2fea99c953377b195205ff07b369589178796edc963fd80fdbe518a2fc1c35c18ae8d"},
};

TEST(TlsPrf, GivesTheKeysOfTheValidationSystem) {
    for (const PrfVector& vector : kPrfVectors) {
        SCOPED_TRACE(vector.label);
        const ByteString expected = fromHex(vector.output);
        EXPECT_EQ(toHex(tlsPrf(fromHex(vector.secret), vector.label, fromHex(vector.seed),
                               static_cast<int32_t>(expected.size()))),
                  vector.output);
    }
}

TEST(TlsPrf, GivesExactlyTheBytesAskedForAndAShorterOutputIsItsStart) {
    const ByteString longest = tlsPrf("secret", "label", "seed", 200);
    for (int32_t length = 0; length <= 200; ++length) {
        EXPECT_EQ(tlsPrf("secret", "label", "seed", length), longest.substr(0, static_cast<size_t>(length)));
    }
}

TEST(TlsPrf, IsEmptyForALengthOfZeroOrLess) {
    EXPECT_EQ(tlsPrf("secret", "label", "seed", 0), "");
    EXPECT_EQ(tlsPrf("secret", "label", "seed", -1), "");
    EXPECT_EQ(tlsPrf("secret", "label", "seed", std::numeric_limits<int32_t>::min()), "");
}

ByteString xorOf(const ByteString& one, const ByteString& other, size_t count) {
    ByteString result;
    for (size_t index = 0; index < count; ++index) result += static_cast<char>(one[index] ^ other[index]);
    return result;
}

TEST(TlsPrf, SplitsASecretOf48BytesIntoTwoHalvesOf24) {
    const ByteString first(24, 'a');
    const ByteString second(24, 'b');
    EXPECT_EQ(tlsPrf(first + second, "label", "seed", 104),
              xorOf(pHashMd5(first, "labelseed", 104), pHashSha1(second, "labelseed", 104), 104));
}

TEST(TlsPrf, LetsTheHalvesOfASecretOf47BytesShareTheMiddleByte) {
    const ByteString first(23, 'a');
    const ByteString second(23, 'b');
    EXPECT_EQ(tlsPrf(first + 'm' + second, "label", "seed", 104),
              xorOf(pHashMd5(first + 'm', "labelseed", 104), pHashSha1('m' + second, "labelseed", 104), 104));
}

TEST(TlsPrf, TakesASecretOfOneByteAndOfNone) {
    EXPECT_EQ(tlsPrf("s", "label", "seed", 20),
              xorOf(pHashMd5("s", "labelseed", 20), pHashSha1("s", "labelseed", 20), 20));
    EXPECT_EQ(tlsPrf("", "label", "seed", 20),
              xorOf(pHashMd5("", "labelseed", 20), pHashSha1("", "labelseed", 20), 20));
}

TEST(TlsPrf, RefusesASecretWhoseHalvesAreLongerThanAnHmacKey) {
    EXPECT_NO_THROW(tlsPrf(ByteString(128, 's'), "label", "seed", 1));
    EXPECT_THROW(tlsPrf(ByteString(129, 's'), "label", "seed", 1), std::invalid_argument);
}

// RFC 2246, section 5, in its own words.
TEST(PHash, ChainsHmacsOverWholeBlocks) {
    const ByteString a1 = hmacMd5("secret", "seed");
    const ByteString a2 = hmacMd5("secret", a1);
    const ByteString md5Blocks = hmacMd5("secret", a1 + "seed") + hmacMd5("secret", a2 + "seed");
    for (int32_t length = 1; length <= 16; ++length)
        EXPECT_EQ(pHashMd5("secret", "seed", length), md5Blocks.substr(0, 16));
    for (int32_t length = 17; length <= 32; ++length) EXPECT_EQ(pHashMd5("secret", "seed", length), md5Blocks);

    const ByteString b1 = hmacSha1("secret", "seed");
    const ByteString b2 = hmacSha1("secret", b1);
    const ByteString sha1Blocks = hmacSha1("secret", b1 + "seed") + hmacSha1("secret", b2 + "seed");
    for (int32_t length = 1; length <= 20; ++length) {
        EXPECT_EQ(pHashSha1("secret", "seed", length), sha1Blocks.substr(0, 20));
    }
    for (int32_t length = 21; length <= 40; ++length) EXPECT_EQ(pHashSha1("secret", "seed", length), sha1Blocks);
}

TEST(PHash, GivesSevenBlocksOfMd5AndSixOfSha1For104Bytes) {
    EXPECT_EQ(pHashMd5("secret", "seed", 104).size(), 112U);
    EXPECT_EQ(pHashSha1("secret", "seed", 104).size(), 120U);
}

TEST(PHash, IsEmptyForALengthOfZeroOrLess) {
    for (const int32_t length : {0, -1, std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(pHashMd5("secret", "seed", length), "");
        EXPECT_EQ(pHashSha1("secret", "seed", length), "");
    }
}

TEST(PHash, RefusesASecretOfMoreThan64Bytes) {
    EXPECT_THROW(pHashMd5(ByteString(65, 's'), "seed", 16), std::invalid_argument);
    EXPECT_THROW(pHashSha1(ByteString(65, 's'), "seed", 20), std::invalid_argument);
}

}  // namespace
}  // namespace velmora
