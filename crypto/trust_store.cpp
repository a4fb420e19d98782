#include "crypto/trust_store.h"

#include <utility>

#include "config/trace_log.h"

namespace velmora {
namespace {

CertificateChain own;

}  // namespace

std::vector<CertificateChain> trustStore;

void trustCertificate(const ByteString& der) {
    CertificateChain anchor({der}, kSkipVerification);
    if (anchor.modulus.empty() || anchor.exponent.empty()) {
        WriteLog(4, "Certificate without an RSA key is not trusted");
        return;
    }
    trustStore.push_back(std::move(anchor));
}

CertificateChain& ownCertificate() {
    return own;
}

void setOwnCertificate(const std::vector<ByteString>& certificates, const ByteString& privateKeyDer) {
    // An empty text would ask for the verification of the chain.
    own = CertificateChain(certificates, privateKeyDer.empty() ? kSkipVerification : privateKeyDer);
}

}  // namespace velmora
