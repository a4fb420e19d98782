// What damage does to a certificate: cut off anywhere, any byte changed, or elements in any order at all.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "crypto/certificate.h"
#include "crypto/certificate_chain.h"
#include "crypto/trust_store.h"
#include "tests/crypto/certificate_files.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/crypto/plain_certificate.h"

namespace velmora {
namespace {

const char* const kFiles[] = {"leaf", "version1", "two_names", "second_in_set", "elliptic", "large_root"};

TEST(DamagedCertificate, IsReadByTheRulesWhereverItIsCutOff) {
    for (const char* file : kFiles) {
        const ByteString der = certificateFile(file);
        for (size_t length = 0; length <= der.size(); ++length) {
            const ByteString cut = der.substr(0, length);
            ASSERT_TRUE(parseCertificate(cut) == PlainCertificate(cut)) << file << " of length " << length;
        }
    }
}

TEST(DamagedCertificate, IsReadByTheRulesWhicheverByteIsChanged) {
    // Tags, lengths in both forms, and others.
    constexpr std::string_view kBytes("\x00\x01\x02\x03\x06\x0C\x13\x1E\x30\x31\x7F\x80\x81\x84\x8F\x90\xA0\xF1\xFF",
                                      19);
    for (const char* file : kFiles) {
        const ByteString der = certificateFile(file);
        for (size_t position = 0; position < der.size(); ++position) {
            ByteString changed = der;
            for (const char byte : kBytes) {
                changed[position] = byte;
                ASSERT_TRUE(parseCertificate(changed) == PlainCertificate(changed)) << file << " at " << position;
            }
        }
    }
}

// Elements in elements, with the tags of certificates, and now and then a length that is wrong.
ByteString randomElements(std::mt19937& random, int depth) {
    constexpr std::string_view kTags("\x30\x30\x30\x31\x02\x03\x06\x0C\x13\x14\x1E\xA0\x00", 13);
    ByteString elements;
    for (size_t count = random() % 5; count > 0; --count) {
        const uint8_t tag = static_cast<uint8_t>(kTags[random() % kTags.size()]);
        const bool holdsElements = depth > 0 && random() % 4 != 0;
        const ByteString content = holdsElements ? randomElements(random, depth - 1) : ByteString(kCommonNameType);
        ByteString element = derElement(tag, content);
        if (random() % 30 == 0) element[1] = static_cast<char>(random());
        elements += element;
    }
    return elements;
}

TEST(DamagedCertificate, IsReadByTheRulesWhateverItsElementsAre) {
    std::mt19937 random(65);
    for (int round = 0; round < 20000; ++round) {
        const ByteString der = derElement(0x30, randomElements(random, 6));
        ASSERT_TRUE(parseCertificate(der) == PlainCertificate(der)) << "round " << round;
        const ByteString name = randomElements(random, 3);
        ASSERT_EQ(commonName(name), plainCommonName(name)) << "round " << round;
    }
}

// Trusts the certificate that has signed "leaf" while it lives.
class DamagedChainTest : public testing::Test {
protected:
    DamagedChainTest() { trustCertificate(certificateFile("lower")); }
    ~DamagedChainTest() override { trustStore.clear(); }
    DamagedChainTest(const DamagedChainTest&) = delete;
    DamagedChainTest& operator=(const DamagedChainTest&) = delete;

    static bool IsVerified(const ByteString& der) { return !CertificateChain({der}, "").subjectName.empty(); }

    const ByteString leaf = certificateFile("leaf");
};

TEST_F(DamagedChainTest, IsNotVerifiedWhicheverBitOfWhatIsSignedOrOfTheSignatureIsChanged) {
    ASSERT_TRUE(IsVerified(leaf));
    const size_t tbsBytes = parseCertificate(leaf).signedBytes.size();
    for (size_t position = 4; position < leaf.size(); ++position) {
        // Between the two stands the algorithm, whose parameters nobody reads.
        if (position >= 4 + tbsBytes && position < leaf.size() - 128) continue;
        for (int bit = 0; bit < 8; ++bit) {
            ByteString changed = leaf;
            changed[position] = static_cast<char>(changed[position] ^ (1 << bit));
            ASSERT_FALSE(IsVerified(changed)) << "bit " << bit << " of byte " << position;
        }
    }
}

TEST_F(DamagedChainTest, IsNotVerifiedWhereverItIsCutOff) {
    for (size_t length = 0; length < leaf.size(); ++length) ASSERT_FALSE(IsVerified(leaf.substr(0, length))) << length;
}

TEST_F(DamagedChainTest, IsVerifiedWithAnythingBehindTheCertificate) {
    EXPECT_TRUE(IsVerified(leaf + "anything"));
    EXPECT_TRUE(IsVerified(ByteString(7, '\0') + leaf + leaf));
}

}  // namespace
}  // namespace velmora
