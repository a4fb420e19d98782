// Arithmetic on any numbers beside GMP's.
#include "crypto/big_int.h"

#include "crypto/mod_inverse.h"
#include "crypto/mod_pow.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "tests/support/gmp_number.h"

namespace velmora {
namespace {

using GmpOperation = void (*)(mpz_ptr, mpz_srcptr, mpz_srcptr);

void Judge(const BigInt& result, GmpOperation operation, const BigInt& left, const BigInt& right, const char* rule) {
    GmpNumber value;
    operation(value, GmpNumber(left), GmpNumber(right));
    Expect(Same(result, value), rule);
}

void JudgeSums(const BigInt& left, const BigInt& right) {
    Judge(add(left, right), mpz_add, left, right, "a sum is GMP's");
    Judge(subtract(left, right), mpz_sub, left, right, "a difference is GMP's");
    Judge(multiply(left, right), mpz_mul, left, right, "a product is GMP's");
    Expect(compareMagnitude(left, right) == (mpz_cmpabs(GmpNumber(left), GmpNumber(right)) > 0), "so is the order");
}

// The rules for signs are ours, so the numbers are positive; and the divisor is not zero.
void JudgeQuotients(const BigInt& left, const BigInt& right) {
    Judge(divide(left, right), mpz_tdiv_q, left, right, "a quotient is GMP's");
    Judge(mod(left, right), mpz_tdiv_r, left, right, "a remainder is GMP's");
    GmpNumber inverse;
    if (mpz_invert(inverse, GmpNumber(left), GmpNumber(right)) == 0) mpz_set_ui(inverse, 0);
    if (isSmall(right, 1)) mpz_set_ui(inverse, 0);
    Expect(Same(modInverse(left, right), inverse), "an inverse is GMP's");
}

void JudgePower(const BigInt& base, const BigInt& exponent, const BigInt& modulus) {
    if (isSmall(modulus, 1) || isSmall(exponent, 0)) return;  // those have a rule of their own
    GmpNumber power;
    mpz_powm(power, GmpNumber(base), GmpNumber(exponent), GmpNumber(modulus));
    Expect(Same(modPow(base, exponent, modulus), power), "a power is GMP's");
}

}  // namespace
}  // namespace velmora

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput input(data, bytes);
    const unsigned signs = input.U8();
    const BigInt right = fromBytes(input.Piece());
    const BigInt exponent = fromBytes(input.Bytes(input.U8() % 8));  // mod_pow has longer ones
    const BigInt left = fromBytes(input.Bytes(600));
    if (!right.magnitude.empty()) {
        JudgeQuotients(left, right);
        JudgePower(left, exponent, right);
    }
    BigInt signedLeft = left;
    BigInt signedRight = right;
    if (!left.magnitude.empty()) signedLeft.negative = signs & 1U;
    if (!right.magnitude.empty()) signedRight.negative = signs / 2 & 1U;
    JudgeSums(signedLeft, signedRight);
    GmpNumber shifted;
    mpz_mul_2exp(shifted, GmpNumber(left), signs);
    Expect(Same(shiftLeft(left, static_cast<int32_t>(signs)), shifted), "a shifted number is GMP's");
    return 0;
}
