#pragma once

#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// A chain of X.509 certificates in DER, with what TLS needs of it: the name and the RSA key of the leaf, and for the
// system's own chain the private key.
//
// Names are the contents of their DER, which commonName (crypto/certificate.h) renders as text. Numbers are unsigned
// big-endian bytes.
struct CertificateChain {
    std::vector<ByteString> certificates;  // leaf first, as received
    ByteString issuerName;                 // issuer of the topmost certificate
    ByteString subjectName;                // of the leaf, as is all that follows
    ByteString commonName;                 // as text, in the bytes of the certificate
    ByteString modulus;                    // without zero bytes at its start
    ByteString exponent;                   // likewise
    ByteString privateKeyDer;              // an RSAPrivateKey, or nothing
    ByteString keyModulus;                 // the numbers in privateKeyDer, as they stand there: see rsa_private_key.h
    ByteString keyPublicExponent;
    ByteString keyPrivateExponent;
    ByteString keyPrime1;
    ByteString keyPrime2;

    CertificateChain() = default;

    // Reads the chain. An empty mode text asks for its verification; any other skips it. One of two bytes or more is
    // the private key's DER at the same time, and the key is read from it.
    CertificateChain(std::vector<ByteString> leafFirst, std::string_view modeText);
};

// The mode text that skips the verification and has no private key.
inline constexpr std::string_view kSkipVerification = " ";

// Reads the chain's certificates from the topmost one down, and sets the fields of the leaf. issuerName is set with the
// first certificate that has an issuer, and never again.
//
// Unless skip is set, each certificate must be signed with the key of the one above it, and the topmost one with the
// key of a certificate in the trust store whose common name is that of its issuer but for the case of A to Z. Otherwise
// the trace log says why at level 4, and no field of the leaf is set:
//
//   "Certificate for ISSUER not available"      the trust store has no such certificate
//   "Certificate could not be verified"         another key has signed it, or another algorithm than RSA with SHA-1 or
//                                               MD5 was used, or the key that should have signed it has a modulus of
//                                               more than 2,048 bytes or an exponent of more than 8
//
// This is all there is to it. Dates, constraints, key usage, other names and revocation are not looked at; of a
// signature, only the digest at its end is, and not the padding in front of it. Keep.
void verifyChain(CertificateChain& chain, bool skip);

}  // namespace velmora
