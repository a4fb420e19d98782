#pragma once

#include "crypto/rsa.h"

namespace velmora {

// Published RSA vectors: RSA Laboratories, "Test vectors for RSA PKCS#1 v1.5 Encryption" and "... Signature". All
// values are hexadecimal.

struct RsaVectorKey {
    const char* modulus;
    const char* publicExponent;
    const char* privateExponent;
    const char* prime1;
    const char* prime2;
    const char* primeExponent1;
    const char* primeExponent2;
};

// A block of type 2 of the modulus's length, and what it is encrypted to.
struct RsaEncryptionVector {
    const char* source;
    const RsaVectorKey& key;
    const char* block;
    const char* encryption;
};

// What a block of type 1 holds (the DigestInfo of a SHA-1 digest), and its signature with kSigningKey.
struct RsaSignatureVector {
    const char* source;
    const char* data;
    const char* signature;
};

extern const RsaVectorKey kSigningKey;  // 1024 bits
extern const RsaEncryptionVector kRsaEncryptionVectors[5];
extern const RsaSignatureVector kRsaSignatureVectors[3];

// The private key for our operations.
RsaKey rsaKey(const RsaVectorKey& vector);

}  // namespace velmora
