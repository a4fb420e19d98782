#pragma once

#include <vector>

#include "config/byte_string.h"
#include "crypto/certificate_chain.h"

namespace velmora {

// The certificates that the process has once: those it trusts, and its own. Both are empty unless somebody fills them
// before the first connection starts; from then on they are only read. No lock.

// The trust anchors. Of each, subjectName, modulus and exponent count.
extern std::vector<CertificateChain> trustStore;

// Trusts a certificate, given in DER, to sign others. One without an RSA key could not, and is left out; the trace log
// says so at level 4.
void trustCertificate(const ByteString& der);

// The system's own certificate, which a TLS server presents, and a TLS client that is asked for one. The reference
// stays good.
CertificateChain& ownCertificate();

// Sets the system's own certificate: its chain in DER, leaf first, and its private key, an RSAPrivateKey in DER. The
// chain is not verified. Without a private key the chain is kept, but can prove nothing.
void setOwnCertificate(const std::vector<ByteString>& certificates, const ByteString& privateKeyDer);

}  // namespace velmora
