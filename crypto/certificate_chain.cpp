#include "crypto/certificate_chain.h"

#include <cstddef>
#include <optional>
#include <utility>

#include "config/ascii_case.h"
#include "config/trace_log.h"
#include "crypto/certificate.h"
#include "crypto/md5.h"
#include "crypto/rsa.h"
#include "crypto/rsa_private_key.h"
#include "crypto/sha1.h"
#include "crypto/trust_store.h"

namespace velmora {
namespace {

// Object identifiers (RFC 8017, appendix C) in DER.
constexpr std::string_view kMd5WithRsaEncryption = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x04";   // 1.2.840.113549.1.1.4
constexpr std::string_view kSha1WithRsaEncryption = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x05";  // 1.2.840.113549.1.1.5

constexpr size_t kShortestPrivateKeyBytes = 2;  // a shorter mode text is none

// Nobody has a longer key, and a check with one could take hours.
constexpr size_t kModulusMaxBytes = 2048;
constexpr size_t kExponentMaxBytes = 8;

struct PublicKey {
    std::string_view modulus;
    std::string_view exponent;
};

// The key of the first certificate in the trust store that has the issuer's common name. No name is a name like any
// other: an issuer without one finds the first certificate without one. Keep.
std::optional<PublicKey> trustedKey(std::string_view issuer) {
    const ByteString wanted = LowerCase(commonName(issuer));
    for (const CertificateChain& trusted : trustStore) {
        if (LowerCase(commonName(trusted.subjectName)) == wanted) return PublicKey{trusted.modulus, trusted.exponent};
    }
    return {};
}

// Empty for an algorithm that we do not know.
ByteString digestOfSignedBytes(const Certificate& certificate) {
    const ByteString signedBytes(certificate.signedBytes);
    if (certificate.signatureAlgorithm == kSha1WithRsaEncryption) return sha1Digest(signedBytes);
    if (certificate.signatureAlgorithm == kMd5WithRsaEncryption) return md5Digest(signedBytes);
    return {};
}

// The digest at the end of the block counts, whatever stands in front of it. Keep.
bool isSignedWith(const PublicKey& key, const Certificate& certificate) {
    if (key.modulus.size() > kModulusMaxBytes || key.exponent.size() > kExponentMaxBytes) return false;
    const ByteString digest = digestOfSignedBytes(certificate);
    if (digest.empty()) return false;
    const ByteString block =
        rsaVerifyRaw(ByteString(key.exponent), ByteString(key.modulus), ByteString(certificate.signature));
    return block.ends_with(digest);
}

// keyAbove: of the next higher certificate, which the topmost one does not have.
bool isVerified(const Certificate& certificate, const std::optional<PublicKey>& keyAbove) {
    const std::optional<PublicKey> key = keyAbove ? keyAbove : trustedKey(certificate.issuer);
    if (!key) {
        WriteLog(4, "Certificate for " + ByteString(commonName(certificate.issuer)), " not available");
        return false;
    }
    if (isSignedWith(*key, certificate)) return true;
    WriteLog(4, "Certificate could not be verified");
    return false;
}

void setLeafFields(CertificateChain& chain, const Certificate& leaf) {
    chain.subjectName = leaf.subject;
    chain.commonName = leaf.commonName;
    chain.modulus = leaf.modulus;
    chain.exponent = leaf.exponent;
}

void readPrivateKey(CertificateChain& chain) {
    RsaPrivateKeyNumbers numbers = readRsaPrivateKey(chain.privateKeyDer);
    chain.keyModulus = std::move(numbers.modulus);
    chain.keyPublicExponent = std::move(numbers.publicExponent);
    chain.keyPrivateExponent = std::move(numbers.privateExponent);
    chain.keyPrime1 = std::move(numbers.prime1);
    chain.keyPrime2 = std::move(numbers.prime2);
}

}  // namespace

CertificateChain::CertificateChain(std::vector<ByteString> leafFirst, std::string_view modeText)
    : certificates(std::move(leafFirst)) {
    verifyChain(*this, !modeText.empty());
    if (modeText.size() < kShortestPrivateKeyBytes) return;
    privateKeyDer = modeText;
    readPrivateKey(*this);
}

void verifyChain(CertificateChain& chain, bool skip) {
    if (chain.certificates.empty()) return;
    Certificate certificate;
    std::optional<PublicKey> keyAbove;
    for (auto der = chain.certificates.rbegin(); der != chain.certificates.rend(); ++der) {
        certificate = parseCertificate(*der);
        if (!skip && !isVerified(certificate, keyAbove)) return;
        keyAbove = {certificate.modulus, certificate.exponent};
        if (chain.issuerName.empty()) chain.issuerName = certificate.issuer;
    }
    setLeafFields(chain, certificate);
}

}  // namespace velmora
