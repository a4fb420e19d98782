#pragma once

#include "config/byte_string.h"

namespace velmora {

// The numbers of a private key that setPrivateKey takes, each in unsigned big-endian bytes as they stand in the key,
// often with a zero byte in front.
struct RsaPrivateKeyNumbers {
    ByteString modulus;
    ByteString publicExponent;
    ByteString privateExponent;
    ByteString prime1;
    ByteString prime2;
};

// Reads an RSAPrivateKey of version 0 (RFC 8017, appendix A.1.2) in DER. Its last three numbers are not read, since
// they follow from the others.
//
// All numbers are empty when there are fewer than 10 bytes, which means no key. They are so, too, when the version is
// another or one of the numbers is missing or cut off; the trace log then has "Cannot read private RSA key" at level 5.
RsaPrivateKeyNumbers readRsaPrivateKey(const ByteString& der);

}  // namespace velmora
