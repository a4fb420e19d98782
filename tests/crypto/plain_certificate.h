#pragma once

#include <string_view>

#include "config/byte_string.h"
#include "crypto/certificate.h"

namespace velmora {

// The rules by which a certificate is read, written down as plainly as they can be: bytes are copied and cut off, one
// rule a line. What it gives has to be what parseCertificate gives.
struct PlainCertificate {
    explicit PlainCertificate(const ByteString& der);

    ByteString signedBytes;
    ByteString issuer;
    ByteString subject;
    ByteString commonName;
    ByteString modulus;
    ByteString exponent;
    ByteString signatureAlgorithm;
    ByteString signature;
};

bool operator==(const Certificate& certificate, const PlainCertificate& plain);

ByteString plainCommonName(ByteString name);

}  // namespace velmora
