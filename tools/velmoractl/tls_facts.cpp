#include "tools/velmoractl/tls_facts.h"

#include <bit>

#include "config/text_numbers.h"
#include "tls/cipher_suite.h"
#include "tls/protocol.h"

namespace velmora::ctl {
namespace {

struct SuiteName {
    CipherSuite suite;
    std::string_view name;
};

// As registered for TLS (RFC 2246, A.5, and RFC 3268).
constexpr SuiteName kSuiteNames[] = {
    {kRsaWithAes128Sha, "TLS_RSA_WITH_AES_128_CBC_SHA"},
    {kRsaWithAes256Sha, "TLS_RSA_WITH_AES_256_CBC_SHA"},
    {kRsaWithRc4Md5, "TLS_RSA_WITH_RC4_128_MD5"},
    {kRsaWithRc4Sha, "TLS_RSA_WITH_RC4_128_SHA"},
};

ByteString SuiteText(const CipherSuite& suite) {
    for (const SuiteName& entry : kSuiteNames) {
        if (entry.suite == suite) return ByteString(entry.name);
    }
    return "suite number " + DecimalText(suite.number);
}

// A modulus has no zero bytes at its start.
uint32_t BitsOf(const ByteString& modulus) {
    if (modulus.empty()) return 0;
    const auto top = static_cast<unsigned char>(modulus.front());
    return static_cast<uint32_t>(8 * (modulus.size() - 1)) + static_cast<uint32_t>(std::bit_width(top));
}

}  // namespace

bool IsEncrypted(const TlsConnection& tls) {
    return tls.HandshakeComplete() && !tls.Failed() && tls.Suite().IsKnown();
}

TlsFacts DescribeTls(const TlsConnection& tls) {
    const CertificateChain& certificate = tls.KeyExchangeCertificate();
    const ByteString version = tls.ProtocolVersion() == kSsl30 ? "SSL 3.0" : "TLS 1.0";
    return {version, SuiteText(tls.Suite()), BitsOf(certificate.modulus), certificate.commonName};
}

ByteString HandshakeFault(const TlsConnection& tls) {
    if (tls.HandshakeComplete() && !tls.Suite().IsKnown()) {
        return "chose a cipher that the provider does not have, " + SuiteText(tls.Suite());
    }
    if (!tls.Failed()) return {};
    if (tls.HandshakeComplete()) return "proved to have seen another handshake than the provider";
    if (tls.Suite().number == 0) return "named a version before TLS 1.0";
    if (tls.KeyExchangeCertificate().certificates.empty()) return "showed no certificate with an RSA key fit for use";
    return "sent a message that was changed on its way";
}

bool LooksLikeTls(std::string_view received) {
    constexpr char kMajorVersion = 3;
    if (received.size() < 2) return false;
    const auto type = static_cast<RecordType>(received[0]);
    return (type == RecordType::kHandshake || type == RecordType::kAlert) && received[1] == kMajorVersion;
}

}  // namespace velmora::ctl
