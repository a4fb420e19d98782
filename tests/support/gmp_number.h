#pragma once

#include <gmp.h>

#include "crypto/big_int.h"

namespace velmora {

// A number of GMP's that frees itself.
class GmpNumber {
public:
    GmpNumber() { mpz_init(value); }
    explicit GmpNumber(const BigInt& number) : GmpNumber() {
        mpz_import(value, number.magnitude.size() / 4, -1, 4, -1, 0, number.magnitude.data());
        if (number.negative != 0) mpz_neg(value, value);
    }
    GmpNumber(const GmpNumber&) = delete;
    GmpNumber& operator=(const GmpNumber&) = delete;
    ~GmpNumber() { mpz_clear(value); }

    operator mpz_ptr() { return value; }

private:
    mpz_t value;
};

// The same number, and normalised: without zero limbs at the top, and zero without a sign.
inline bool Same(const BigInt& number, mpz_srcptr value) {
    return mpz_cmp(GmpNumber(number), value) == 0 && (number.negative != 0) == (mpz_sgn(value) < 0) &&
           (mpz_sizeinbase(value, 2) + 31) / 32 * 4 * (mpz_sgn(value) != 0 ? 1 : 0) == number.magnitude.size();
}

}  // namespace velmora
