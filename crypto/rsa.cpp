#include "crypto/rsa.h"

#include <array>

#include "crypto/mod_inverse.h"
#include "crypto/mod_pow.h"

namespace velmora {
namespace {

constexpr size_t kSignedBlockBytes = 128;
constexpr size_t kBlockMarkBytes = 3;  // 00 01 before the padding and 00 behind it

ByteString inBlockLength(const BigInt& result, const ByteString& block) {
    return toBytes(result, static_cast<int32_t>(block.size()));
}

// x^d mod n by way of the two primes.
BigInt privateByPrimes(const RsaKey& key, const BigInt& x) {
    const std::array<BigInt, 2> halves = modPowPair(x, key.dP, key.p, key.dQ, key.q);
    return mod(add(multiply(halves[1], key.pCoefficient), multiply(halves[0], key.qCoefficient)), key.n);
}

BigInt privateResult(const RsaKey& key, const BigInt& x) {
    if (isSmall(key.dP, 0) || isSmall(key.dQ, 0)) return modPow(x, key.d, key.n);
    return privateByPrimes(key, x);
}

}  // namespace

void setPublicKey(RsaKey& key, const ByteString& exponent, const ByteString& modulus) {
    key = {};
    key.e = fromBytes(exponent);
    key.n = fromBytes(modulus);
}

void setPrivateKey(RsaKey& key, const ByteString& d, const ByteString& e, const ByteString& n, const ByteString& p,
                   const ByteString& q) {
    setPublicKey(key, e, n);
    key.d = fromBytes(d);
    key.p = fromBytes(p);
    key.q = fromBytes(q);
    if (isSmall(key.p, 0)) return;

    key.dP = mod(key.d, subtract(key.p, kBigIntOne));
    key.dQ = mod(key.d, subtract(key.q, kBigIntOne));
    key.qCoefficient = mod(multiply(modInverse(key.q, key.p), key.q), key.n);
    key.pCoefficient = mod(multiply(modInverse(key.p, key.q), key.p), key.n);
}

ByteString rsaPublic(const RsaKey& key, const ByteString& block) {
    return inBlockLength(modPow(fromBytes(block), key.e, key.n), block);
}

ByteString rsaPrivate(const RsaKey& key, const ByteString& block) {
    return inBlockLength(privateResult(key, fromBytes(block)), block);
}

ByteString rsaSign(const RsaKey& key, const ByteString& data) {
    if (data.size() + kBlockMarkBytes > kSignedBlockBytes) return {};
    ByteString block("\x00\x01", 2);
    block.append(kSignedBlockBytes - kBlockMarkBytes - data.size(), '\xFF');
    block += '\0';
    block += data;
    return toBytes(privateByPrimes(key, fromBytes(block)), kSignedBlockBytes);
}

ByteString rsaVerifyRaw(const ByteString& exponent, const ByteString& modulus, const ByteString& signature) {
    return toBytes(modPow(fromBytes(signature), fromBytes(exponent), fromBytes(modulus)), 0);
}

}  // namespace velmora
