#include "crypto/limbs.h"

#include <algorithm>
#include <bit>

namespace velmora {
namespace {

constexpr Limb kHighestLimb = ~Limb{0};

constexpr DoubleLimb joined(Limb high, Limb low) {
    return DoubleLimb{high} << kLimbBits | low;
}

// number << bits into shifted, for 0 to 63 bits; returns what leaves it at the top.
Limb shiftUp(LimbSpan shifted, LimbView number, size_t bits) {
    Limb carry = 0;
    for (size_t index = 0; index < number.size(); ++index) {
        const DoubleLimb limb = DoubleLimb{number[index]} << bits;
        shifted[index] = static_cast<Limb>(limb) | carry;
        carry = highLimb(limb);
    }
    return carry;
}

void shiftDown(LimbSpan number, size_t bits) {
    Limb above = 0;
    for (size_t index = number.size(); index-- > 0;) {
        const Limb limb = number[index];
        number[index] = static_cast<Limb>(joined(above, limb) >> bits);
        above = limb;
    }
}

// Finds one limb of a quotient: the three highest limbs of the rest, divided by the two highest of the divisor, by two
// multiplications with a reciprocal (Moeller and Granlund, "Improved division by invariant integers", algorithms 4
// and 6; the names are theirs).
class LimbQuotient {
public:
    // The divisor's highest bit must be set.
    LimbQuotient(Limb divisorHigh, Limb divisorLow) : d1(divisorHigh), d0(divisorLow), d(joined(d1, d0)) {
        v = static_cast<Limb>(joined(~d1, kHighestLimb) / d1);
        Limb p = d1 * v + d0;
        if (p < d0) {
            --v;
            if (p >= d1) {
                --v;
                p -= d1;
            }
            p -= d1;
        }
        const DoubleLimb t = DoubleLimb{v} * d0;
        p += highLimb(t);
        if (p < highLimb(t)) {
            --v;
            if (joined(p, static_cast<Limb>(t)) >= d) --v;
        }
    }

    // floor((u2, u1, u0) / (d1, d0)), where (u2, u1) is below (d1, d0).
    Limb of(Limb u2, Limb u1, Limb u0) const {
        const DoubleLimb q = DoubleLimb{v} * u2 + joined(u2, u1);
        Limb q1 = highLimb(q);
        DoubleLimb r = joined(u1 - q1 * d1, u0) - DoubleLimb{d0} * q1 - d;
        ++q1;
        if (highLimb(r) >= static_cast<Limb>(q)) {
            --q1;
            r += d;
        }
        if (r >= d) ++q1;
        return q1;
    }

private:
    Limb d1;
    Limb d0;
    DoubleLimb d;
    Limb v = 0;  // floor((2^192 - 1) / d) - 2^64
};

Division divideByOneLimb(LimbView dividend, Limb divisor) {
    Division result = {Limbs(dividend.size()), Limbs(1)};
    Limb& rest = result.remainder[0];
    for (size_t index = dividend.size(); index-- > 0;) {
        const DoubleLimb part = joined(rest, dividend[index]);
        result.quotient[index] = static_cast<Limb>(part / divisor);
        rest = static_cast<Limb>(part % divisor);
    }
    return result;
}

}  // namespace

LimbView significant(LimbView number) {
    while (!number.empty() && number.back() == 0) number = number.first(number.size() - 1);
    return number;
}

size_t bitLength(LimbView number) {
    number = significant(number);
    return number.empty() ? 0 : number.size() * kLimbBits - static_cast<size_t>(std::countl_zero(number.back()));
}

Limb bitsAt(LimbView number, size_t position) {
    const size_t index = position / kLimbBits;
    if (index >= number.size()) return 0;
    const Limb above = index + 1 < number.size() ? number[index + 1] : 0;
    return static_cast<Limb>(joined(above, number[index]) >> position % kLimbBits);
}

bool isLess(LimbView left, LimbView right) {
    left = significant(left);
    right = significant(right);
    if (left.size() != right.size()) return left.size() < right.size();
    return std::lexicographical_compare(left.rbegin(), left.rend(), right.rbegin(), right.rend());
}

Limbs resized(LimbView number, size_t count) {
    Limbs result(count);
    std::copy_n(number.begin(), std::min(count, number.size()), result.begin());
    return result;
}

Limbs shiftedUp(LimbView number, size_t bits) {
    const size_t whole = bits / kLimbBits;
    Limbs shifted(whole + number.size() + 1);
    shifted.back() = shiftUp(LimbSpan(shifted).subspan(whole), number, bits % kLimbBits);
    return shifted;
}

Limbs shiftedDown(LimbView number, size_t bits) {
    const size_t whole = std::min(bits / kLimbBits, number.size());
    Limbs shifted(number.begin() + static_cast<ptrdiff_t>(whole), number.end());
    shiftDown(shifted, bits % kLimbBits);
    return shifted;
}

Limb addLimbs(LimbSpan sum, LimbView addend) {
    Limb carry = 0;
    for (size_t index = 0; index < addend.size(); ++index) {
        const DoubleLimb limb = DoubleLimb{sum[index]} + addend[index] + carry;
        sum[index] = static_cast<Limb>(limb);
        carry = highLimb(limb);
    }
    for (size_t index = addend.size(); carry != 0 && index < sum.size(); ++index) carry = ++sum[index] == 0 ? 1 : 0;
    return carry;
}

Limb subtractLimbs(LimbSpan difference, LimbView subtrahend) {
    Limb borrow = 0;
    for (size_t index = 0; index < subtrahend.size(); ++index) {
        const DoubleLimb limb = DoubleLimb{difference[index]} - subtrahend[index] - borrow;
        difference[index] = static_cast<Limb>(limb);
        borrow = highLimb(limb) & 1;
    }
    for (size_t index = subtrahend.size(); borrow != 0 && index < difference.size(); ++index) {
        borrow = difference[index]-- == 0 ? 1 : 0;
    }
    return borrow;
}

Limb addProduct(LimbSpan sum, LimbView number, Limb factor) {
    Limb carry = 0;
#pragma GCC unroll 4
    for (size_t index = 0; index < number.size(); ++index) {
        const DoubleLimb limb = DoubleLimb{number[index]} * factor + sum[index] + carry;
        sum[index] = static_cast<Limb>(limb);
        carry = highLimb(limb);
    }
    return carry;
}

void multiplyLimbs(LimbSpan product, LimbView left, LimbView right) {
    std::fill(product.begin(), product.end(), 0);
    for (size_t index = 0; index < right.size(); ++index) {
        product[index + left.size()] = addProduct(product.subspan(index), left, right[index]);
    }
}

void squareLimbs(LimbSpan product, LimbView number) {
    // Each product of two different limbs once, the whole doubled, the squares of the limbs added.
    const size_t count = number.size();
    std::fill(product.begin(), product.end(), 0);
    for (size_t index = 0; index < count; ++index) {
        product[index + count] = addProduct(product.subspan(2 * index + 1), number.subspan(index + 1), number[index]);
    }
    Limb shiftedOut = 0;
    Limb carry = 0;
    for (size_t index = 0; index < count; ++index) {
        Limb* const pair = &product[2 * index];
        const DoubleLimb square = DoubleLimb{number[index]} * number[index];
        const DoubleLimb low = DoubleLimb{pair[0] << 1 | shiftedOut} + static_cast<Limb>(square) + carry;
        const DoubleLimb high = DoubleLimb{pair[1] << 1 | pair[0] >> 63} + highLimb(square) + highLimb(low);
        shiftedOut = pair[1] >> 63;
        pair[0] = static_cast<Limb>(low);
        pair[1] = static_cast<Limb>(high);
        carry = highLimb(high);
    }
}

// Knuth, "The Art of Computer Programming", volume 2, section 4.3.1, algorithm D.
Division divideLimbs(LimbView dividend, LimbView divisor) {
    dividend = significant(dividend);
    divisor = significant(divisor);
    const size_t count = divisor.size();
    if (isLess(dividend, divisor)) return {{}, resized(dividend, count)};
    if (count == 1) return divideByOneLimb(dividend, divisor[0]);

    // Both are shifted so that the divisor's highest bit is set; the remainder is shifted back in the end.
    const auto shift = static_cast<size_t>(std::countl_zero(divisor.back()));
    Limbs scaled(count);
    shiftUp(scaled, divisor, shift);
    Limbs rest(dividend.size() + 1);
    rest.back() = shiftUp(rest, dividend, shift);
    // Multiples of the divisor are subtracted by adding those of its complement, 2^(64 * count) - scaled.
    Limbs complement(count);
    subtractLimbs(complement, scaled);

    const Limb high = scaled[count - 1];
    const Limb low = scaled[count - 2];
    const LimbQuotient limbQuotient(high, low);
    Limbs quotient(rest.size() - count);
    for (size_t index = quotient.size(); index-- > 0;) {
        const LimbSpan part = LimbSpan(rest).subspan(index, count);
        Limb& top = rest[index + count];
        Limb q = kHighestLimb;
        if (joined(top, part[count - 1]) < joined(high, low)) {
            q = limbQuotient.of(top, part[count - 1], part[count - 2]);
        }
        // The complement brings in q at the top as well. If more than that is missing there, q was one too large: two
        // limbs of the divisor were looked at, and it may have more.
        if (top + addProduct(part, complement, q) != q) {
            --q;
            addLimbs(part, scaled);
        }
        top = 0;
        quotient[index] = q;
    }
    rest.resize(count);
    shiftDown(rest, shift);
    return {std::move(quotient), std::move(rest)};
}

}  // namespace velmora
