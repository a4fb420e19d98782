#include "tls/cipher_suite.h"

#include <gtest/gtest.h>

#include <vector>

namespace velmora {
namespace {

struct SuiteRow {
    const char* name;
    uint16_t number;
    CipherKind cipherKind;
    MacKind macKind;
    size_t macBytes;
    size_t keyBytes;
    size_t ivBytes;
    size_t blockBytes;
};

// RFC 2246, A.5 and the table in appendix C; RFC 3268, section 2.
const SuiteRow kRows[] = {
    {"TLS_RSA_WITH_RC4_128_MD5", 0x0004, CipherKind::kRc4, MacKind::kMd5, 16, 16, 0, 1},
    {"TLS_RSA_WITH_RC4_128_SHA", 0x0005, CipherKind::kRc4, MacKind::kSha1, 20, 16, 0, 1},
    {"TLS_RSA_WITH_AES_128_CBC_SHA", 0x002F, CipherKind::kAes128Cbc, MacKind::kSha1, 20, 16, 16, 16},
    {"TLS_RSA_WITH_AES_256_CBC_SHA", 0x0035, CipherKind::kAes256Cbc, MacKind::kSha1, 20, 32, 16, 16},
};

TEST(FindCipherSuite, KnowsTheFourSuites) {
    for (const SuiteRow& row : kRows) {
        SCOPED_TRACE(row.name);
        const CipherSuite suite = FindCipherSuite(row.number);
        EXPECT_TRUE(suite.IsKnown());
        EXPECT_EQ(suite.number, row.number);
        EXPECT_EQ(suite.cipherKind, row.cipherKind);
        EXPECT_EQ(suite.macKind, row.macKind);
        EXPECT_EQ(suite.macBytes, row.macBytes);
        EXPECT_EQ(suite.keyBytes, row.keyBytes);
        EXPECT_EQ(suite.ivBytes, row.ivBytes);
        EXPECT_EQ(suite.blockBytes, row.blockBytes);
        EXPECT_EQ(suite.BlockMode(), row.blockBytes > 1);
    }
}

TEST(FindCipherSuite, KnowsNoOtherOfTheNumbersThatThereAre) {
    std::vector<uint16_t> known;
    for (uint32_t number = 0; number <= 0xFFFF; ++number) {
        if (FindCipherSuite(static_cast<uint16_t>(number)).IsKnown()) known.push_back(static_cast<uint16_t>(number));
    }
    EXPECT_EQ(known, (std::vector<uint16_t>{0x0004, 0x0005, 0x002F, 0x0035}));
}

TEST(FindCipherSuite, GivesForAnUnknownNumberASuiteWithoutCipherMacKeysAndBlocks) {
    for (const uint16_t number : std::vector<uint16_t>{0x0000, 0x0001, 0x000A, 0x002E, 0x0036, 0xFFFF}) {
        SCOPED_TRACE(number);
        const CipherSuite suite = FindCipherSuite(number);
        EXPECT_EQ(suite.number, number);
        EXPECT_EQ(suite.cipherKind, CipherKind::kNone);
        EXPECT_EQ(suite.macKind, MacKind::kNone);
        EXPECT_EQ(suite.macBytes + suite.keyBytes + suite.ivBytes, 0U);
        EXPECT_EQ(suite.blockBytes, 1U);
        EXPECT_FALSE(suite.BlockMode());
    }
}

TEST(CipherSuites, ArePreferredWithAesFirst) {
    std::vector<uint16_t> numbers;
    for (const CipherSuite& suite : kCipherSuites) numbers.push_back(suite.number);
    EXPECT_EQ(numbers, (std::vector<uint16_t>{0x002F, 0x0035, 0x0004, 0x0005}));
}

}  // namespace
}  // namespace velmora
