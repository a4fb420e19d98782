#include "crypto/built_in_certificates.h"

#include <gtest/gtest.h>

#include <vector>

#include "crypto/certificate.h"
#include "crypto/trust_store.h"
#include "tests/crypto/pem.h"
#include "tests/support/logged.h"

namespace velmora {
namespace {

TEST(BuiltInCertificates, HaveTheirLengthsWithEveryLineEnd) {
    EXPECT_EQ(kBuiltInCaPem.size(), 1324U);
    EXPECT_EQ(kBuiltInDevicePem.size(), 1298U);
}

TEST(BuiltInCertificates, ConsistOfLinesThatEndWithCrLf) {
    for (std::string_view text : {kBuiltInCaPem, kBuiltInDevicePem}) {
        std::vector<std::string_view> lines;
        for (size_t end = text.find("\r\n"); end != std::string_view::npos; end = text.find("\r\n")) {
            lines.push_back(text.substr(0, end));
            text.remove_prefix(end + 2);
        }
        EXPECT_EQ(text, "");
        ASSERT_GT(lines.size(), 3U);
        EXPECT_EQ(lines.front(), "-----BEGIN CERTIFICATE-----");
        EXPECT_EQ(lines.back(), "-----END CERTIFICATE-----");
        for (size_t line = 1; line + 2 < lines.size(); ++line) EXPECT_EQ(lines[line].size(), 64U);
        EXPECT_LE(lines[lines.size() - 2].size(), 64U);
    }
}

TEST(BuiltInCertificates, AreAnAuthorityAndADeviceThatItSigned) {
    trustStore.clear();
    trustCertificate(certificateOfPem(kBuiltInCaPem));
    CertificateChain authority;
    CertificateChain device;
    const std::vector<ByteString> logged = Logged(8, [&] {
        authority = CertificateChain({certificateOfPem(kBuiltInCaPem)}, "");
        device = CertificateChain({certificateOfPem(kBuiltInDevicePem)}, "");
    });
    trustStore.clear();
    EXPECT_EQ(logged, std::vector<ByteString>{});
    EXPECT_EQ(authority.commonName, "Velmora Certification Authority of Telephony Service Providers");
    EXPECT_EQ(authority.issuerName, authority.subjectName);
    EXPECT_EQ(device.commonName, "Velmora Telephony Device");
    EXPECT_EQ(device.issuerName, authority.subjectName);
    for (const CertificateChain& chain : {authority, device}) {
        EXPECT_EQ(chain.modulus.size(), 128U);
        EXPECT_EQ(chain.exponent, ByteString("\x01\x00\x01", 3));
    }
    EXPECT_NE(authority.modulus, device.modulus);
}

TEST(BuiltInCertificates, AreReadByNobodyAtTheStart) {
    EXPECT_TRUE(trustStore.empty());
    EXPECT_TRUE(ownCertificate().certificates.empty());
}

}  // namespace
}  // namespace velmora
