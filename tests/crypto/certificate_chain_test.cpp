#include "crypto/certificate_chain.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "crypto/big_int.h"
#include "crypto/certificate.h"
#include "crypto/md5.h"
#include "crypto/mod_inverse.h"
#include "crypto/mod_pow.h"
#include "crypto/sha1.h"
#include "crypto/trust_store.h"
#include "tests/crypto/certificate_files.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/support/logged.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using Texts = std::vector<ByteString>;

constexpr char kNotVerified[] = "4 Certificate could not be verified";

std::vector<ByteString> certificateFiles(const std::vector<ByteString>& names) {
    std::vector<ByteString> certificates;
    certificates.reserve(names.size());
    for (const ByteString& name : names) certificates.push_back(certificateFile(name));
    return certificates;
}

bool hasLeafFields(const CertificateChain& chain) {
    return !(chain.subjectName + chain.commonName + chain.modulus + chain.exponent).empty();
}

// Every test starts and ends with an empty trust store.
class CertificateChainTest : public testing::Test {
protected:
    CertificateChainTest() { trustStore.clear(); }
    ~CertificateChainTest() override { trustStore.clear(); }
    CertificateChainTest(const CertificateChainTest&) = delete;
    CertificateChainTest& operator=(const CertificateChainTest&) = delete;

    // Builds the chain of these files, to be verified, and gives what the log says up to level 8.
    Texts Verify(const std::vector<ByteString>& names) {
        return Logged(8, [&] { chain = CertificateChain(certificateFiles(names), ""); });
    }

    // The same for certificates made by hand.
    Texts VerifyBytes(const std::vector<ByteString>& certificates) {
        return Logged(8, [&] { chain = CertificateChain(certificates, ""); });
    }

    CertificateChain chain;
};

TEST_F(CertificateChainTest, VerifiesChainsOfOneToFour) {
    trustCertificate(certificateFile("root"));
    const std::vector<std::vector<ByteString>> chains = {
        {"root"},
        {"md5"},
        {"upper"},
        {"upper", "root"},
        {"lower", "upper"},
        {"leaf", "lower", "upper"},
        {"leaf", "lower", "upper", "root"},
    };
    for (const std::vector<ByteString>& names : chains) {
        SCOPED_TRACE(names.front());
        EXPECT_EQ(Verify(names), Texts{});
        EXPECT_EQ(chain.certificates, certificateFiles(names));
        const ByteString leafDer = certificateFile(names.front());
        const Certificate leaf = parseCertificate(leafDer);
        EXPECT_EQ(chain.subjectName, leaf.subject);
        EXPECT_EQ(chain.commonName, leaf.commonName);
        EXPECT_EQ(chain.modulus, leaf.modulus);
        EXPECT_EQ(chain.exponent, leaf.exponent);
        EXPECT_EQ(chain.privateKeyDer, "");
    }
}

TEST_F(CertificateChainTest, VerifiesWithKeysOf1024To4096BitsAndSmallExponents) {
    for (const char* anchor : {"root", "large_root", "upper", "exponent3"}) trustCertificate(certificateFile(anchor));
    EXPECT_EQ(Verify({"large_leaf"}), Texts{});
    EXPECT_EQ(chain.commonName, "large.velmora.example");
    EXPECT_EQ(Verify({"large_leaf", "large_root"}), Texts{});
    EXPECT_EQ(chain.commonName, "large.velmora.example");
    EXPECT_EQ(Verify({"lower"}), Texts{});
    EXPECT_EQ(chain.commonName, "Velmora Test Lower");
    EXPECT_EQ(Verify({"exponent3"}), Texts{});
    EXPECT_EQ(chain.exponent, "\x03");
}

TEST_F(CertificateChainTest, VerifiesVersion1) {
    trustCertificate(certificateFile("root"));
    EXPECT_EQ(Verify({"version1"}), Texts{});
    EXPECT_EQ(chain.commonName, "version1.velmora.example");
}

TEST_F(CertificateChainTest, IgnoresTheCaseOfTheIssuer) {
    trustCertificate(certificateFile("loud_root"));
    EXPECT_EQ(Verify({"leaf", "lower", "upper"}), Texts{});
    EXPECT_EQ(chain.commonName, "pbx.velmora.example");
}

TEST_F(CertificateChainTest, SaysWhichCertificateTheTrustStoreLacks) {
    EXPECT_EQ(Verify({"leaf", "lower", "upper"}), Texts{"4 Certificate for Velmora Test Root not available"});
    EXPECT_FALSE(hasLeafFields(chain));
    EXPECT_EQ(Verify({"leaf"}), Texts{"4 Certificate for Velmora Test Lower not available"});
    trustCertificate(certificateFile("large_root"));
    EXPECT_EQ(Verify({"upper"}), Texts{"4 Certificate for Velmora Test Root not available"});
    EXPECT_EQ(chain.issuerName, "");
}

TEST_F(CertificateChainTest, RefusesTheRightNameWithAnotherKey) {
    trustCertificate(certificateFile("other_root"));
    EXPECT_EQ(Verify({"leaf", "lower", "upper"}), Texts{kNotVerified});
    EXPECT_FALSE(hasLeafFields(chain));
    EXPECT_EQ(chain.issuerName, "");
}

TEST_F(CertificateChainTest, AsksOnlyTheFirstCertificateOfAName) {
    trustCertificate(certificateFile("other_root"));
    trustCertificate(certificateFile("root"));
    EXPECT_EQ(Verify({"upper"}), Texts{kNotVerified});
    std::swap(trustStore[0], trustStore[1]);
    EXPECT_EQ(Verify({"upper"}), Texts{});
}

TEST_F(CertificateChainTest, RefusesAnUnknownSignatureAlgorithm) {
    trustCertificate(certificateFile("root"));
    EXPECT_EQ(Verify({"sha256"}), Texts{kNotVerified});
    EXPECT_FALSE(hasLeafFields(chain));
}

TEST_F(CertificateChainTest, RefusesAChainInTheWrongOrderOrWithAGap) {
    trustCertificate(certificateFile("root"));
    EXPECT_EQ(Verify({"upper", "lower", "leaf"}), Texts{"4 Certificate for Velmora Test Lower not available"});
    EXPECT_EQ(Verify({"leaf", "upper"}), Texts{kNotVerified});
    EXPECT_FALSE(hasLeafFields(chain));
}

TEST_F(CertificateChainTest, KeepsTheIssuerOfTheTopmostWhenALowerCertificateFails) {
    trustCertificate(certificateFile("root"));
    EXPECT_EQ(Verify({"leaf", "upper"}), Texts{kNotVerified});
    const ByteString upper = certificateFile("upper");
    EXPECT_EQ(chain.issuerName, parseCertificate(upper).issuer);
    EXPECT_FALSE(hasLeafFields(chain));
}

TEST_F(CertificateChainTest, SetsTheIssuerOnce) {
    chain = CertificateChain(certificateFiles({"leaf", "lower"}), kSkipVerification);
    const ByteString lower = certificateFile("lower");
    const ByteString issuer(parseCertificate(lower).issuer);
    EXPECT_EQ(chain.issuerName, issuer);
    EXPECT_EQ(commonName(chain.issuerName), "Velmora Test Upper");
    chain.certificates = certificateFiles({"root"});
    verifyChain(chain, true);
    EXPECT_EQ(chain.issuerName, issuer);
    EXPECT_EQ(chain.commonName, "Velmora Test Root");
}

TEST_F(CertificateChainTest, TakesTheIssuerFromTheNextCertificateWhenTheTopmostHasNone) {
    HandMadeCertificate nameless;
    nameless.issuer = "";
    chain = CertificateChain({certificateFile("leaf"), nameless.der()}, kSkipVerification);
    EXPECT_EQ(commonName(chain.issuerName), "Velmora Test Lower");
}

TEST_F(CertificateChainTest, ReadsTheLeafWhateverIsSignedWhenVerificationIsSkipped) {
    ByteString root = certificateFile("root");
    root.back() = static_cast<char>(root.back() ^ 1);
    EXPECT_EQ(Logged(8, [&] { chain = CertificateChain({root}, kSkipVerification); }), Texts{});
    EXPECT_EQ(chain.commonName, "Velmora Test Root");
    EXPECT_EQ(chain.modulus.size(), 128U);
    EXPECT_EQ(chain.exponent, "\x01\x00\x01"s);
    chain = CertificateChain(certificateFiles({"sha256", "elliptic", "large_root"}), kSkipVerification);
    EXPECT_EQ(chain.commonName, "sha256.velmora.example");
    EXPECT_EQ(commonName(chain.issuerName), "Velmora Large Root");
}

TEST_F(CertificateChainTest, SkipsVerificationForAModeTextOfOneByteWhateverItIs) {
    for (int value = 0; value < 256; ++value) {
        const ByteString modeText(1, static_cast<char>(value));
        EXPECT_EQ(Logged(8, [&] { chain = CertificateChain(certificateFiles({"leaf"}), modeText); }), Texts{});
        EXPECT_EQ(chain.commonName, "pbx.velmora.example");
        EXPECT_EQ(chain.privateKeyDer, "");
    }
}

TEST_F(CertificateChainTest, TakesAModeTextOfTwoBytesForAPrivateKeyAndDoesNotVerify) {
    EXPECT_EQ(Logged(8, [&] { chain = CertificateChain(certificateFiles({"leaf"}), "ab"); }), Texts{});
    EXPECT_EQ(chain.commonName, "pbx.velmora.example");
    EXPECT_EQ(chain.privateKeyDer, "ab");
    EXPECT_EQ(chain.keyModulus, "");
}

TEST_F(CertificateChainTest, ReadsThePrivateKeyFromTheModeText) {
    const ByteString key = certificateFile("device_key");
    EXPECT_EQ(Logged(8, [&] { chain = CertificateChain(certificateFiles({"leaf", "lower"}), key); }), Texts{});
    EXPECT_EQ(chain.privateKeyDer, key);
    EXPECT_EQ(chain.keyModulus, "\0"s + chain.modulus);
    EXPECT_EQ(chain.keyPublicExponent, chain.exponent);
    EXPECT_GT(chain.keyPrivateExponent.size(), 100U);
    EXPECT_EQ(chain.keyPrime1.size(), 65U);
    EXPECT_EQ(chain.keyPrime2.size(), 65U);
}

TEST_F(CertificateChainTest, HasNoNumbersOfAPrivateKeyOfAnotherVersion) {
    ByteString key = certificateFile("device_key");
    ASSERT_EQ(key.substr(4, 3), "\x02\x01\x00"s);  // the version
    key[6] = '\x01';
    EXPECT_EQ(Logged(8, [&] { chain = CertificateChain(certificateFiles({"leaf"}), key); }),
              Texts{"5 Cannot read private RSA key"});
    EXPECT_EQ(chain.privateKeyDer, key);
    EXPECT_EQ(chain.keyModulus + chain.keyPublicExponent + chain.keyPrivateExponent, "");
    EXPECT_EQ(chain.keyPrime1 + chain.keyPrime2, "");
    EXPECT_EQ(chain.commonName, "pbx.velmora.example");
}

TEST_F(CertificateChainTest, LogsEachNameFromTheTopmostCertificateDown) {
    const auto record = [](const ByteString& digits) { return "9 domain1=" + digits; };
    const Texts names = {record("56656c6d6f72612054657374205570706572"), record("56656c6d6f72612054657374204c6f776572"),
                         record("7062782e76656c6d6f72612e6578616d706c65")};
    const auto build = [&](std::string_view modeText) {
        return Logged(9, [&] { chain = CertificateChain(certificateFiles({"leaf", "lower", "upper"}), modeText); });
    };
    EXPECT_EQ(build(kSkipVerification), names);
    EXPECT_EQ(build(""), (Texts{names[0], "4 Certificate for Velmora Test Root not available"}));
    trustCertificate(certificateFile("root"));
    EXPECT_EQ(build(""), names);
}

TEST_F(CertificateChainTest, SetsNothingForAnEmptyList) {
    for (const char* modeText : {"", " "}) {
        EXPECT_EQ(Logged(9, [&] { chain = CertificateChain({}, modeText); }), Texts{});
        EXPECT_EQ(chain.issuerName, "");
        EXPECT_FALSE(hasLeafFields(chain));
    }
    chain.commonName = "kept";
    verifyChain(chain, true);
    EXPECT_EQ(chain.commonName, "kept");
}

TEST_F(CertificateChainTest, LeavesTheLeafAsItIsWhenALaterVerificationFails) {
    chain = CertificateChain(certificateFiles({"leaf"}), kSkipVerification);
    EXPECT_EQ(Logged(8, [&] { verifyChain(chain, false); }),
              Texts{"4 Certificate for Velmora Test Lower not available"});
    EXPECT_EQ(chain.commonName, "pbx.velmora.example");
}

// Certificates made by hand: whoever signs with the exponent 1 puts what was signed into the signature.

constexpr size_t kKeyBytes = 128;

// A block that ends in the digest, with bytes that belong to no padding in front.
ByteString blockWith(const ByteString& digest) {
    return ByteString(kKeyBytes - 1 - digest.size(), '\x5A') + digest;
}

// Trusts the issuer that a hand-made certificate has unless it is told another.
void trustIssuerMadeByHand() {
    HandMadeCertificate authority;
    authority.subject = nameContent("Issuer");
    trustCertificate(authority.der());
}

TEST_F(CertificateChainTest, LooksAtNothingInFrontOfTheDigest) {
    trustIssuerMadeByHand();
    HandMadeCertificate parts;
    parts.signature = blockWith(sha1Digest(parts.tbs()));
    EXPECT_EQ(VerifyBytes({parts.der()}), Texts{});
    EXPECT_EQ(chain.commonName, "Subject");
    // Nothing at all in front, but for a byte that keeps zero bytes at the start of the digest from going.
    parts.signature = "\x01" + sha1Digest(parts.tbs());
    EXPECT_EQ(VerifyBytes({parts.der()}), Texts{});
    parts.algorithm = kMd5WithRsaEncryption;
    parts.signature = blockWith(md5Digest(parts.tbs()));
    EXPECT_EQ(VerifyBytes({parts.der()}), Texts{});
}

TEST_F(CertificateChainTest, VerifiesWithModuliOfUpTo2048Bytes) {
    trustIssuerMadeByHand();
    for (const size_t modulusBytes : {2048U, 2049U, 100000U}) {
        HandMadeCertificate above;
        above.modulus = ByteString(modulusBytes, '\xFF');
        above.signature = blockWith(sha1Digest(above.tbs()));
        HandMadeCertificate leaf;
        leaf.signature = blockWith(sha1Digest(leaf.tbs()));
        EXPECT_EQ(VerifyBytes({leaf.der(), above.der()}), modulusBytes == 2048 ? Texts{} : Texts{kNotVerified});
        EXPECT_EQ(hasLeafFields(chain), modulusBytes == 2048);
    }
}

// A number below 2^1024 and a digest that is odd: its root modulo 2^1024, for an exponent that is odd.
TEST_F(CertificateChainTest, VerifiesWithExponentsOfUpTo8Bytes) {
    trustIssuerMadeByHand();
    for (const size_t exponentBytes : {8U, 9U}) {
        HandMadeCertificate above;
        above.modulus = "\x01" + ByteString(128, '\0');
        above.exponent = ByteString(exponentBytes, '\x03');
        above.signature = blockWith(sha1Digest(above.tbs()));
        HandMadeCertificate leaf;
        while (sha1Digest(leaf.tbs()).back() % 2 == 0) leaf.validity += '.';
        const BigInt modulus = fromBytes(above.modulus);
        const BigInt root = modInverse(fromBytes(above.exponent), shiftLeft(kBigIntOne, 1022));
        leaf.signature = toBytes(modPow(fromBytes(sha1Digest(leaf.tbs())), root, modulus), 0);
        EXPECT_EQ(VerifyBytes({leaf.der(), above.der()}), exponentBytes == 8 ? Texts{} : Texts{kNotVerified});
        EXPECT_EQ(hasLeafFields(chain), exponentBytes == 8);
    }
}

TEST_F(CertificateChainTest, RefusesABlockThatIsShorterThanTheDigest) {
    trustIssuerMadeByHand();
    HandMadeCertificate parts;
    const ByteString digest = sha1Digest(parts.tbs());
    for (size_t length = 0; length < digest.size(); ++length) {
        parts.signature = digest.substr(digest.size() - length);
        EXPECT_EQ(VerifyBytes({parts.der()}), Texts{kNotVerified});
    }
}

TEST_F(CertificateChainTest, ComparesEveryByteOfTheDigest) {
    trustIssuerMadeByHand();
    HandMadeCertificate parts;
    const ByteString block = blockWith(sha1Digest(parts.tbs()));
    for (size_t position = 0; position < block.size(); ++position) {
        parts.signature = block;
        parts.signature[position] = static_cast<char>(block[position] ^ 0x20);
        const bool inDigest = position >= block.size() - kSha1Bytes;
        EXPECT_EQ(VerifyBytes({parts.der()}), inDigest ? Texts{kNotVerified} : Texts{});
    }
}

TEST_F(CertificateChainTest, RefusesADigestThatIsNotAtTheEnd) {
    trustIssuerMadeByHand();
    HandMadeCertificate parts;
    parts.signature = "\x01" + sha1Digest(parts.tbs()) + "x";
    EXPECT_EQ(VerifyBytes({parts.der()}), Texts{kNotVerified});
}

TEST_F(CertificateChainTest, RefusesTheDigestOfTheOtherAlgorithm) {
    trustIssuerMadeByHand();
    HandMadeCertificate parts;
    parts.signature = blockWith(md5Digest(parts.tbs()));
    EXPECT_EQ(VerifyBytes({parts.der()}), Texts{kNotVerified});
    parts.algorithm = kMd5WithRsaEncryption;
    parts.signature = blockWith(sha1Digest(parts.tbs()));
    EXPECT_EQ(VerifyBytes({parts.der()}), Texts{kNotVerified});
}

TEST_F(CertificateChainTest, RefusesEverySignatureOfAnAlgorithmThatItDoesNotKnow) {
    trustIssuerMadeByHand();
    constexpr std::string_view kSha256WithRsaEncryption = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0B";
    for (const std::string_view algorithm : {""sv, kSha256WithRsaEncryption, kSha1WithRsaEncryption.substr(0, 8)}) {
        HandMadeCertificate parts;
        parts.algorithm = algorithm;
        for (const ByteString& digest : {""s, md5Digest(parts.tbs()), sha1Digest(parts.tbs())}) {
            parts.signature = blockWith(digest);
            EXPECT_EQ(VerifyBytes({parts.der()}), Texts{kNotVerified});
        }
    }
}

TEST_F(CertificateChainTest, ReadsTheAlgorithmBehindTheSignedPartAndNotTheOneInIt) {
    trustIssuerMadeByHand();
    HandMadeCertificate parts;
    parts.algorithm = kMd5WithRsaEncryption;
    const ByteString tbs = parts.tbs();
    parts.algorithm = kSha1WithRsaEncryption;
    parts.signature = blockWith(sha1Digest(tbs));
    const ByteString behind = parts.der().substr(4 + parts.tbs().size());
    EXPECT_EQ(VerifyBytes({derElement(0x30, tbs + behind)}), Texts{});
}

TEST_F(CertificateChainTest, LooksAtNoDates) {
    trustIssuerMadeByHand();
    HandMadeCertificate parts;
    const ByteString lastCentury = derElement(0x17, "990101000000Z");
    for (const ByteString& validity : {""s, lastCentury + lastCentury}) {
        parts.validity = validity;
        parts.signature = blockWith(sha1Digest(parts.tbs()));
        EXPECT_EQ(VerifyBytes({parts.der()}), Texts{});
    }
}

TEST_F(CertificateChainTest, LetsADeviceSignForANameThatIsNotItsOwn) {
    trustIssuerMadeByHand();
    HandMadeCertificate device;  // it has no basicConstraints, and so is no authority
    device.signature = blockWith(sha1Digest(device.tbs()));
    HandMadeCertificate below;
    below.issuer = nameContent("a name that nobody has");
    below.subject = nameContent("below");
    below.signature = blockWith(sha1Digest(below.tbs()));
    EXPECT_EQ(VerifyBytes({below.der(), device.der()}), Texts{});
    EXPECT_EQ(chain.commonName, "below");
}

TEST_F(CertificateChainTest, TakesNoNameForANameLikeAnyOther) {
    HandMadeCertificate nameless;
    nameless.issuer = nameAttribute(kOrganizationType, 0x0C, "Velmora");
    nameless.signature = blockWith(sha1Digest(nameless.tbs()));
    trustIssuerMadeByHand();
    EXPECT_EQ(VerifyBytes({nameless.der()}), Texts{"4 Certificate for  not available"});
    HandMadeCertificate authority;
    authority.subject = "";
    trustCertificate(authority.der());
    EXPECT_EQ(VerifyBytes({nameless.der()}), Texts{});
}

TEST_F(CertificateChainTest, RefusesWhatACertificateWithoutAnRsaKeyWouldHaveSigned) {
    trustIssuerMadeByHand();
    HandMadeCertificate keyless;
    keyless.modulus = "";
    keyless.exponent = "";
    keyless.signature = blockWith(sha1Digest(keyless.tbs()));
    HandMadeCertificate below;
    below.signature = blockWith(sha1Digest(below.tbs()));
    EXPECT_EQ(VerifyBytes({below.der(), keyless.der()}), Texts{kNotVerified});
    // The trust store is asked for the topmost certificate alone.
    EXPECT_EQ(VerifyBytes({below.der()}), Texts{});
}

}  // namespace
}  // namespace velmora
