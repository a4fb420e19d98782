// What a client makes of the server's certificate.

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "crypto/sha1.h"
#include "crypto/trust_store.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/support/hex.h"
#include "tests/support/logged.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/tls_identity.h"
#include "tls/tls_connection.h"

namespace velmora {
namespace {

using Texts = std::vector<ByteString>;

// A certificate that a key with the exponent 1 has signed: the signature is what was signed. The 1 in front keeps
// digests whole that start with a zero byte.
ByteString SignedDer(HandMadeCertificate certificate) {
    certificate.signature = Octets({1}) + sha1Digest(certificate.tbs());
    return certificate.der();
}

HandMadeCertificate NamedCertificate(std::string_view name) {
    HandMadeCertificate certificate;
    certificate.subject = name.empty() ? ByteString() : nameContent(name);
    return certificate;
}

HandMadeCertificate CertificateWithKey(const ByteString& modulus, const ByteString& exponent) {
    HandMadeCertificate certificate;
    certificate.modulus = modulus;
    certificate.exponent = exponent;
    return certificate;
}

class CertificateCheckTest : public testing::Test {
protected:
    CertificateCheckTest() {
        trustStore.clear();
        HandMadeCertificate issuer;
        issuer.subject = nameContent("Issuer");
        trustCertificate(issuer.der());
    }
    ~CertificateCheckTest() override { trustStore.clear(); }
    CertificateCheckTest(const CertificateCheckTest&) = delete;
    CertificateCheckTest& operator=(const CertificateCheckTest&) = delete;

    // What a new client with these settings answers to a Certificate with this body, as an outline; its log is in log.
    ByteString AnswerToBody(const ByteString& body) {
        client = TlsConnection();
        client.SetLogPrefix("CSTA: ");
        client.SetExpectedDomain(domain);
        client.verifyCertificates = verify;
        client.StartClientHandshake();
        client.Send({});
        log = Logged(loglevel, [&] { client.Feed(HandshakeRecord(MessageOf(11, body))); });
        const ByteString answer = Outline(client.Send({}));
        EXPECT_EQ(client.Failed(), !answer.empty());
        return answer;
    }
    ByteString AnswerTo(const std::vector<ByteString>& certificates) {
        return AnswerToBody(CertificateBody(certificates));
    }
    ByteString AnswerToName(const ByteString& name) { return AnswerTo({SignedDer(NamedCertificate(name))}); }
    ByteString AnswerToKey(const ByteString& modulus, const ByteString& exponent) {
        return AnswerTo({SignedDer(CertificateWithKey(modulus, exponent))});
    }

    bool verify = true;
    ByteString domain;
    int loglevel = 8;
    TlsConnection client;
    Texts log;
};

const ByteString kModulus(128, '\xC3');
const ByteString kExponent = Octets({1, 0, 1});

// ------------------------------------------------------------------------------------------------ the list

TEST_F(CertificateCheckTest, RefusesAnEmptyList) {
    loglevel = 9;
    EXPECT_EQ(AnswerTo({}), "21:2,48");
    EXPECT_EQ(log, (Texts{"9 CSTA: ProcessCertificate(000000)", "9 CSTA: Received 0 certificates",
                          "9 CSTA: SendAlert(0230)"}));
}

TEST_F(CertificateCheckTest, RefusesAnEmptyListEvenWhenNothingIsVerified) {
    verify = false;
    EXPECT_EQ(AnswerTo({}), "21:2,48");
    EXPECT_EQ(AnswerToBody(""), "21:2,48");
    EXPECT_EQ(AnswerToBody(Octets({0, 0})), "21:2,48");
}

TEST_F(CertificateCheckTest, CountsTheCertificates) {
    verify = false;
    loglevel = 9;
    const ByteString der = SignedDer(NamedCertificate("pbx.example"));
    for (const size_t count : {1U, 2U, 11U}) {
        AnswerTo(std::vector<ByteString>(count, der));
        EXPECT_EQ(log[1], "9 CSTA: Received " + std::to_string(count) + " certificates");
    }
}

TEST_F(CertificateCheckTest, ReadsNothingBehindTheList) {
    verify = false;
    loglevel = 9;
    const ByteString der = SignedDer(NamedCertificate("pbx.example"));
    EXPECT_EQ(AnswerToBody(CertificateBody({der}) + Counted(3, der)), "");
    EXPECT_EQ(log[1], "9 CSTA: Received 1 certificates");
}

TEST_F(CertificateCheckTest, KeepsTheCertificateForTheKeyExchange) {
    verify = false;
    const TlsIdentity pbx = LoadTlsIdentity("rsa1024");
    EXPECT_EQ(AnswerTo({pbx.certificate, ClientAuthorityCertificate()}), "");
    EXPECT_EQ(client.KeyExchangeCertificate().certificates,
              (std::vector<ByteString>{pbx.certificate, ClientAuthorityCertificate()}));
    EXPECT_EQ(client.KeyExchangeCertificate().commonName, "pbx.velmora.example");
}

TEST_F(CertificateCheckTest, KeepsNoCertificateThatItRefuses) {
    AnswerToKey(kModulus, "");
    EXPECT_TRUE(client.KeyExchangeCertificate().certificates.empty());
    domain = "other.example";
    AnswerToName("pbx.example");
    EXPECT_TRUE(client.KeyExchangeCertificate().certificates.empty());
}

// ------------------------------------------------------------------------------------------------ no verification

TEST_F(CertificateCheckTest, AcceptsASelfSignedCertificateForAnyNameWhenNothingIsVerified) {
    verify = false;
    domain = "another.example";
    loglevel = 9;
    const TlsIdentity pbx = LoadTlsIdentity("rsa1024");
    EXPECT_EQ(AnswerTo({pbx.certificate}), "");
    const CertificateChain certificate({pbx.certificate}, kSkipVerification);
    EXPECT_EQ(log, (Texts{"9 CSTA: ProcessCertificate(" + toHex(CertificateBody({pbx.certificate})) + ")",
                          "9 CSTA: Received 1 certificates", "9 domain1=" + toHex("pbx.velmora.example"),
                          "9 CSTA: Don't verify certificates", "9 CSTA: Rsa N(" + toHex(certificate.modulus) + ")",
                          "9 CSTA: Rsa E(010001)"}));
}

TEST_F(CertificateCheckTest, VerifiesNoSignatureWhenNothingIsVerified) {
    verify = false;
    trustStore.clear();
    HandMadeCertificate certificate = NamedCertificate("pbx.example");
    certificate.signature = "wrong";
    EXPECT_EQ(AnswerTo({certificate.der()}), "");
    EXPECT_EQ(log, Texts{});
}

// ------------------------------------------------------------------------------------------------ the name

TEST_F(CertificateCheckTest, ComparesNoNameWithoutAnExpectedDomain) {
    EXPECT_EQ(AnswerToName("pbx.example"), "");
    EXPECT_EQ(AnswerToName(""), "");
    EXPECT_EQ(log, Texts{});
}

TEST_F(CertificateCheckTest, SaysNothingAboutSkippingWhenItVerifies) {
    loglevel = 9;
    AnswerToName("pbx.example");
    ASSERT_EQ(log.size(), 5U);
    EXPECT_EQ(log[3].substr(0, 14), "9 CSTA: Rsa N(");
}

struct NameCase {
    const char* domain;
    const char* name;
    bool matches;
};

TEST_F(CertificateCheckTest, MatchesNamesWithoutRegardToCaseAndWildcardsAtAnyDepth) {
    const NameCase kCases[] = {
        {"PBX.Example", "pbx.example", true},
        {"pbx.example", "PBX.EXAMPLE", true},
        {"pbx.example", "pbx.example.org", false},
        {"pbx.example", "xpbx.example", false},
        {"xpbx.example", "pbx.example", false},
        {"pbx.example", "example", false},
        {"example", "*.example", true},
        {"pbx.example", "*.example", true},
        {"a.b.example", "*.EXAMPLE", true},
        {".example", "*.example", true},
        {"xexample", "*.example", false},
        {"example.org", "*.example", false},
        {"pbx.example", "*example", false},
        {"pbx.example", "p*.example", false},
        {"pbx.example", "*", false},
        {"pbx.example", "*.", false},
        {"pbx.example.", "*.", true},
        {"pbx.example", "*.pbx.example.org", false},
        {"pbx.example", "*.*.example", false},
        {"*.example", "*.example", true},
        {"PBX\xC4.example", "pbx\xE4.example", false},
    };
    for (const NameCase& each : kCases) {
        SCOPED_TRACE(ByteString(each.domain) + " and " + each.name);
        domain = each.domain;
        EXPECT_EQ(AnswerToName(each.name), each.matches ? "" : "21:2,46");
    }
}

TEST_F(CertificateCheckTest, SaysWhichNameItExpectedInBothAsTheyStand) {
    domain = "Other.Example";
    loglevel = 4;
    EXPECT_EQ(AnswerToName("PBX.example"), "21:2,46");
    EXPECT_EQ(log, Texts{"4 CSTA: Expecting domain Other.Example, but received PBX.example in certificate"});
}

TEST_F(CertificateCheckTest, SaysNothingOfACertificateWithoutAName) {
    domain = "pbx.example";
    EXPECT_EQ(AnswerToName(""), "21:2,46");
    EXPECT_EQ(log, Texts{});
}

TEST_F(CertificateCheckTest, DoesNotLogTheKeyOfACertificateWithAWrongName) {
    domain = "other.example";
    loglevel = 9;
    AnswerToName("pbx.example");
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[log.size() - 2], "4 CSTA: Expecting domain other.example, but received pbx.example in certificate");
    EXPECT_EQ(log.back(), "9 CSTA: SendAlert(022e)");
}

// A chain that cannot be verified has neither name nor key.
TEST_F(CertificateCheckTest, ACertificateThatNobodyTrustedHasSignedHasNoKey) {
    trustStore.clear();
    EXPECT_EQ(AnswerToName("pbx.example"), "21:2,43");
    EXPECT_EQ(log, Texts{"4 Certificate for Issuer not available"});
}

TEST_F(CertificateCheckTest, ACertificateThatNobodyTrustedHasSignedHasNoNameEither) {
    trustStore.clear();
    domain = "pbx.example";
    EXPECT_EQ(AnswerToName("pbx.example"), "21:2,46");
    EXPECT_EQ(log, Texts{"4 Certificate for Issuer not available"});
}

TEST_F(CertificateCheckTest, ACertificateWithAWrongSignatureHasNoKey) {
    HandMadeCertificate certificate = NamedCertificate("pbx.example");
    certificate.signature = "wrong";
    EXPECT_EQ(AnswerTo({certificate.der()}), "21:2,43");
    EXPECT_EQ(log, Texts{"4 Certificate could not be verified"});
}

// ------------------------------------------------------------------------------------------------ the key

TEST_F(CertificateCheckTest, RefusesACertificateWithoutAKey) {
    EXPECT_EQ(AnswerToKey("", kExponent), "21:2,43");
    EXPECT_EQ(AnswerToKey(kModulus, ""), "21:2,43");
    EXPECT_EQ(AnswerToKey(kModulus, Octets({0, 0})), "21:2,43");
    EXPECT_EQ(AnswerTo({"no certificate"}), "21:2,43");
    EXPECT_EQ(log, Texts{"4 Certificate for  not available"});
    verify = false;
    EXPECT_EQ(AnswerTo({""}), "21:2,43");
    EXPECT_EQ(log, Texts{});
}

TEST_F(CertificateCheckTest, TakesExponentsOfOneToFourBytes) {
    EXPECT_EQ(AnswerToKey(kModulus, Octets({3})), "");
    EXPECT_EQ(AnswerToKey(kModulus, Octets({0xFF, 0xFF, 0xFF, 0xFF})), "");
    EXPECT_EQ(AnswerToKey(kModulus, Octets({0, 0xFF, 0xFF, 0xFF, 0xFF})), "") << "a zero in front does not count";
    EXPECT_EQ(AnswerToKey(kModulus, Octets({1, 0, 0, 0, 1})), "21:2,43");
}

TEST_F(CertificateCheckTest, RefusesAnExponentOfFiveBytesWhateverElseIsGood) {
    domain = "Subject";
    EXPECT_EQ(AnswerToKey(kModulus, kExponent), "");
    EXPECT_EQ(AnswerToKey(kModulus, Octets({1, 0, 0, 0, 1})), "21:2,43");
    verify = false;
    EXPECT_EQ(AnswerToKey(kModulus, Octets({1, 0, 0, 0, 1})), "21:2,43");
    EXPECT_EQ(log, Texts{});
}

TEST_F(CertificateCheckTest, TakesModuliThatHoldTheSecretUpTo16384Bits) {
    EXPECT_EQ(AnswerToKey(ByteString(50, '\xC3'), kExponent), "21:2,43");
    EXPECT_EQ(AnswerToKey(ByteString(51, '\xC3'), kExponent), "");
    EXPECT_EQ(AnswerToKey(Octets({0}) + ByteString(50, '\xC3'), kExponent), "21:2,43");
    EXPECT_EQ(AnswerToKey(ByteString(2048, '\xC3'), kExponent), "");
    EXPECT_EQ(AnswerToKey(ByteString(2049, '\xC3'), kExponent), "21:2,43");
    EXPECT_EQ(AnswerToKey(ByteString(65000, '\xC3'), kExponent), "21:2,43");
}

TEST_F(CertificateCheckTest, TakesUpToAHundredCertificates) {
    verify = false;
    std::vector<ByteString> certificates(100, SignedDer(CertificateWithKey(kModulus, kExponent)));
    EXPECT_EQ(AnswerTo(certificates), "");
    certificates.push_back(certificates.front());
    EXPECT_EQ(AnswerTo(certificates), "21:2,43");
}

TEST_F(CertificateCheckTest, LogsTheKeyBeforeItRefusesIt) {
    loglevel = 9;
    AnswerToKey(Octets({5, 6}), Octets({1, 2, 3, 4, 5}));
    ASSERT_GE(log.size(), 3U);
    EXPECT_EQ(Texts(log.end() - 3, log.end()),
              (Texts{"9 CSTA: Rsa N(0506)", "9 CSTA: Rsa E(0102030405)", "9 CSTA: SendAlert(022b)"}));
}

// The block fills the modulus, whatever its length and whether it is odd; with the exponent 1 it comes out as it went
// in, with a zero byte in front.
TEST_F(CertificateCheckTest, TheKeyExchangeIsAsLongAsAnyModulusItTakes) {
    verify = false;
    for (const size_t modulusBytes : {51U, 52U, 53U, 54U, 63U, 127U, 129U, 130U, 131U, 255U, 2047U, 2048U}) {
        for (const auto& [lastByte, exponent] : {std::pair(0x00U, kExponent), {0xC3U, kExponent}, {0xC3U, "\x01"}}) {
            SCOPED_TRACE(std::to_string(modulusBytes) + " bytes, the last one " + std::to_string(lastByte));
            ByteString modulus(modulusBytes, '\xC3');
            modulus.back() = static_cast<char>(lastByte);
            ASSERT_EQ(AnswerToKey(modulus, exponent), "");
            client.Feed(HandshakeRecord(MessageOf(2, ServerHelloFields().Body()) + MessageOf(14, "")));
            const std::vector<SeenRecord> records = RecordsIn(client.Send({}));
            ASSERT_EQ(records.size(), 3U);
            EXPECT_EQ(MessagesIn(records[0].fragment)[0].body.size(), 2 + modulusBytes);
        }
    }
}

// A server asks for no certificate, but takes one by the same rules.
TEST_F(CertificateCheckTest, AServerChecksACertificateThatIsSentToIt) {
    TlsConnection server;
    server.verifyCertificates = false;
    server.Feed(HandshakeRecord(MessageOf(11, CertificateBody({}))));
    EXPECT_EQ(Outline(server.Send({})), "21:2,48");
}

}  // namespace
}  // namespace velmora
