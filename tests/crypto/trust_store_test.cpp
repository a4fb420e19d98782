#include "crypto/trust_store.h"

#include <gtest/gtest.h>

#include <vector>

#include "crypto/certificate.h"
#include "crypto/rsa.h"
#include "tests/crypto/certificate_files.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/support/logged.h"

namespace velmora {
namespace {

using Texts = std::vector<ByteString>;

// Every test starts and ends with nothing trusted and no own certificate.
class TrustStoreTest : public testing::Test {
protected:
    TrustStoreTest() { Clear(); }
    ~TrustStoreTest() override { Clear(); }
    TrustStoreTest(const TrustStoreTest&) = delete;
    TrustStoreTest& operator=(const TrustStoreTest&) = delete;

private:
    static void Clear() {
        trustStore.clear();
        ownCertificate() = {};
    }
};

// Before any other test of this process has filled it.
const bool trustStoreWasEmptyAtStart = trustStore.empty();
const bool ownCertificateWasEmptyAtStart = ownCertificate().certificates.empty();

TEST_F(TrustStoreTest, IsEmptyAtTheStart) {
    EXPECT_TRUE(trustStoreWasEmptyAtStart);
    EXPECT_TRUE(ownCertificateWasEmptyAtStart);
}

TEST_F(TrustStoreTest, KeepsNameAndKeyOfEachTrustedCertificateInTheirOrder) {
    trustCertificate(certificateFile("root"));
    trustCertificate(certificateFile("large_root"));
    ASSERT_EQ(trustStore.size(), 2U);
    EXPECT_EQ(commonName(trustStore[0].subjectName), "Velmora Test Root");
    EXPECT_EQ(trustStore[0].modulus.size(), 128U);
    EXPECT_EQ(commonName(trustStore[1].subjectName), "Velmora Large Root");
    EXPECT_EQ(trustStore[1].modulus.size(), 512U);
    EXPECT_EQ(trustStore[1].exponent, ByteString("\x01\x00\x01", 3));
}

TEST_F(TrustStoreTest, LeavesOutACertificateWithoutAnRsaKeyAndSaysSo) {
    const Texts refused = {"4 Certificate without an RSA key is not trusted"};
    HandMadeCertificate noModulus;
    noModulus.modulus = "";
    HandMadeCertificate noExponent;
    noExponent.exponent = "";
    for (const ByteString& der : {certificateFile("elliptic"), certificateFile("device_key"), noModulus.der(),
                                  noExponent.der(), ByteString("-----BEGIN CERTIFICATE-----"), ByteString()}) {
        EXPECT_EQ(Logged(8, [&] { trustCertificate(der); }), refused);
    }
    EXPECT_TRUE(trustStore.empty());
}

TEST_F(TrustStoreTest, HoldsTheOwnCertificateWithItsChainAndItsPrivateKey) {
    const std::vector<ByteString> certificates = {certificateFile("leaf"), certificateFile("lower")};
    const CertificateChain& own = ownCertificate();
    EXPECT_EQ(Logged(8, [&] { setOwnCertificate(certificates, certificateFile("device_key")); }), Texts{});
    EXPECT_EQ(&ownCertificate(), &own);
    EXPECT_EQ(own.certificates, certificates);
    EXPECT_EQ(own.commonName, "pbx.velmora.example");
    EXPECT_EQ(commonName(own.issuerName), "Velmora Test Upper");
    EXPECT_EQ(own.keyPublicExponent, own.exponent);
}

TEST_F(TrustStoreTest, HoldsAPrivateKeyThatUndoesWhatTheOwnCertificatesKeyDoes) {
    setOwnCertificate({certificateFile("leaf")}, certificateFile("device_key"));
    const CertificateChain& own = ownCertificate();
    RsaKey publicKey;
    setPublicKey(publicKey, own.exponent, own.modulus);
    RsaKey privateKey;
    setPrivateKey(privateKey, own.keyPrivateExponent, own.keyPublicExponent, own.keyModulus, own.keyPrime1,
                  own.keyPrime2);
    const ByteString block = ByteString(1, '\x01') + ByteString(126, 'x') + "y";
    EXPECT_NE(rsaPublic(publicKey, block), block);
    EXPECT_EQ(rsaPrivate(privateKey, rsaPublic(publicKey, block)), block);
}

TEST_F(TrustStoreTest, HoldsAnOwnCertificateWithoutAPrivateKeyUnverified) {
    EXPECT_EQ(Logged(8, [] { setOwnCertificate({certificateFile("leaf")}, ""); }), Texts{});
    EXPECT_EQ(ownCertificate().commonName, "pbx.velmora.example");
    EXPECT_EQ(ownCertificate().privateKeyDer, "");
}

TEST_F(TrustStoreTest, ReplacesTheOwnCertificateAsAWhole) {
    setOwnCertificate({certificateFile("leaf"), certificateFile("lower")}, certificateFile("device_key"));
    setOwnCertificate({certificateFile("root")}, "");
    EXPECT_EQ(ownCertificate().certificates.size(), 1U);
    EXPECT_EQ(ownCertificate().commonName, "Velmora Test Root");
    EXPECT_EQ(commonName(ownCertificate().issuerName), "Velmora Test Root");
    EXPECT_EQ(ownCertificate().keyModulus, "");
}

}  // namespace
}  // namespace velmora
