#pragma once

#include "config/byte_string.h"
#include "crypto/big_int.h"

namespace velmora {

// RSA (RFC 8017) as TLS needs it. Every byte string is an unsigned big-endian number. The padding of encryption is the
// caller's; only a signature's is built here.
//
// Nothing reports an error: a key that is none gives bytes that are no result. Nothing takes the same time for every
// key.

// A key. A public one has e and n alone. One without p and q, or with a p or q of 1, works through d and n, though it
// cannot sign. The coefficients are those of the Chinese remainder theorem in Gauss's form: a number that is m1 modulo
// p and m2 modulo q is m1 * qCoefficient + m2 * pCoefficient modulo n.
struct RsaKey {
    BigInt e;             // public exponent
    BigInt d;             // private exponent
    BigInt n;             // modulus
    BigInt p;             // first prime
    BigInt q;             // second prime
    BigInt dQ;            // d mod (q - 1)
    BigInt dP;            // d mod (p - 1)
    BigInt qCoefficient;  // ((q^-1 mod p) * q) mod n
    BigInt pCoefficient;  // ((p^-1 mod q) * p) mod n
};

// Makes key a public one.
void setPublicKey(RsaKey& key, const ByteString& exponent, const ByteString& modulus);

// Sets every field. An empty p leaves those derived from p and q zero.
void setPrivateKey(RsaKey& key, const ByteString& d, const ByteString& e, const ByteString& n, const ByteString& p,
                   const ByteString& q);

// block^e mod n, and the same with the private exponent: at least as many bytes as the block has, but for a result
// whose limbs of four bytes make fewer. That one comes back shorter than the block. Keep: the caller knows the length
// it needs.
ByteString rsaPublic(const RsaKey& key, const ByteString& block);
ByteString rsaPrivate(const RsaKey& key, const ByteString& block);

// The signature over exactly these bytes, which TLS 1.0 gives as MD5 and SHA-1 of the handshake: nothing says in it
// which digest they are. The block has 128 bytes, whatever the key: 00 01 FF...FF 00 and the data (RFC 2313, 8.1, block
// type 1), without any FF when the data has 125 bytes. More data gives an empty string.
ByteString rsaSign(const RsaKey& key, const ByteString& data);

// What was signed: signature^exponent mod modulus, without any zero bytes at its start, so that a block of type 1
// starts with 01.
ByteString rsaVerifyRaw(const ByteString& exponent, const ByteString& modulus, const ByteString& signature);

}  // namespace velmora
