// Powers of numbers up to those of the longest keys, one by one, in pairs and as an RSA private operation, beside
// GMP's.
#include "crypto/mod_pow.h"

#include <array>

#include "crypto/big_int_limbs.h"
#include "crypto/odd_power.h"
#include "crypto/rsa.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "tests/support/gmp_number.h"

namespace velmora {
namespace {

constexpr size_t kModulusMaxBytes = 600;  // beyond what fits the vector registers
constexpr size_t kExponentMaxBytes = 40;  // of a short modulus; a long one has a shorter exponent
constexpr size_t kWorkMax = 10000;        // bytes of the exponent by the square of those of the modulus

// A piece, repeated up to a length of its own: so a few bytes give long numbers as well.
ByteString NumberBytes(FuzzInput& input, size_t mostBytes) {
    const size_t count = input.U16() % (mostBytes + 1);
    const ByteString piece = input.Piece();
    ByteString bytes;
    while (!piece.empty() && bytes.size() < count) bytes += piece;
    return bytes.substr(0, count);
}

ByteString ExponentBytes(FuzzInput& input, const ByteString& modulus) {
    const ByteString exponent = NumberBytes(input, kExponentMaxBytes);
    return exponent.substr(0, 1 + kWorkMax / (1 + modulus.size() * modulus.size()));
}

// Exponents of zero and moduli below two have rules of their own.
void JudgePower(const BigInt& power, const BigInt& base, const BigInt& exponent, const BigInt& modulus) {
    if (exponent.magnitude.empty() || !compareMagnitude(modulus, kBigIntOne)) return;
    GmpNumber expected;
    mpz_powm(expected, GmpNumber(base), GmpNumber(exponent), GmpNumber(modulus));
    Expect(Same(power, expected), "a power is GMP's");
}

// The way for processors that do not multiply vectors, whatever this one does.
void JudgePortablePower(const BigInt& base, const BigInt& exponent, const BigInt& modulus) {
    const Limbs modulusLimbs = limbsOf(modulus.magnitude);
    if (modulusLimbs.empty() || modulusLimbs[0] % 2 == 0) return;
    if (!compareMagnitude(modulus, kBigIntOne) || !compareMagnitude(exponent, kBigIntOne)) return;
    const Limbs reduced = divideLimbs(limbsOf(base.magnitude), modulusLimbs).remainder;
    BigInt power;
    power.magnitude = magnitudeOf(portablePower({reduced, limbsOf(exponent.magnitude), modulusLimbs}));
    JudgePower(power, base, exponent, modulus);
}

// The remainder that a private result must have: x^(d mod (prime - 1)) mod prime.
void JudgeHalf(const BigInt& result, const BigInt& x, const BigInt& d, const BigInt& prime) {
    GmpNumber exponent;
    mpz_sub_ui(exponent, GmpNumber(prime), 1);
    mpz_mod(exponent, GmpNumber(d), exponent);
    GmpNumber expected;
    mpz_powm(expected, GmpNumber(x), exponent, GmpNumber(prime));
    GmpNumber remainder;
    mpz_mod(remainder, GmpNumber(result), GmpNumber(prime));
    Expect(mpz_cmp(remainder, expected) == 0, "a private result has both primes' remainders");
}

// Any two coprime numbers above two do as primes: they fix the result by its remainders. Its exponents are only
// reduced, and none of them to zero, which would take the way without primes.
void JudgePrivate(const ByteString& block, const BigInt& d, const BigInt& p, const BigInt& q) {
    const BigInt two = add(kBigIntOne, kBigIntOne);
    if (!compareMagnitude(p, two) || !compareMagnitude(q, two)) return;
    GmpNumber common;
    mpz_gcd(common, GmpNumber(p), GmpNumber(q));
    if (mpz_cmp(common, GmpNumber(kBigIntOne)) != 0) return;
    RsaKey key;
    const BigInt n = multiply(p, q);
    setPrivateKey(key, toBytes(d, 0), "\x03", toBytes(n, 0), toBytes(p, 0), toBytes(q, 0));
    const BigInt result = fromBytes(rsaPrivate(key, block));
    Expect(compareMagnitude(n, result), "a private result is below the modulus");
    if (isSmall(key.dP, 0) || isSmall(key.dQ, 0)) return JudgePower(result, fromBytes(block), d, n);
    JudgeHalf(result, fromBytes(block), d, p);
    JudgeHalf(result, fromBytes(block), d, q);
}

}  // namespace
}  // namespace velmora

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput input(data, bytes);
    const bool isPrivate = input.U8() % 2 != 0;
    const ByteString modulusBytes1 = NumberBytes(input, isPrivate ? kModulusMaxBytes / 2 : kModulusMaxBytes);
    const ByteString modulusBytes2 = NumberBytes(input, isPrivate ? kModulusMaxBytes / 2 : kModulusMaxBytes);
    const BigInt modulus1 = fromBytes(modulusBytes1);
    const BigInt modulus2 = fromBytes(modulusBytes2);
    const BigInt exponent1 = fromBytes(ExponentBytes(input, modulusBytes1));
    const BigInt exponent2 = fromBytes(ExponentBytes(input, modulusBytes2));
    const ByteString baseBytes = NumberBytes(input, kModulusMaxBytes);
    const BigInt base = fromBytes(baseBytes);
    if (isPrivate) {
        JudgePrivate(baseBytes, exponent1, modulus1, modulus2);
        return 0;
    }
    JudgePower(modPow(base, exponent1, modulus1), base, exponent1, modulus1);
    JudgePortablePower(base, exponent1, modulus1);
    const std::array<BigInt, 2> pair = modPowPair(base, exponent1, modulus1, exponent2, modulus2);
    JudgePower(pair[0], base, exponent1, modulus1);
    JudgePower(pair[1], base, exponent2, modulus2);
    return 0;
}
