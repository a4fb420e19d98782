#include <algorithm>

#include "crypto/montgomery.h"
#include "crypto/odd_power.h"

namespace velmora {
namespace {

// A power on its way, in Montgomery's form with R = 2^(64 * limbs of the modulus).
class PortableForm {
public:
    explicit PortableForm(const ModularPower& modularPower)
        : power(modularPower),
          modulus(significant(power.modulus)),
          count(modulus.size()),
          factor(negatedInverse(modulus[0])),
          product(2 * count) {}

    // The table holds the powers 0 to 2^width - 1 of the base, in Montgomery's form; of the zeroth, which is never
    // multiplied by, there is only the place.
    void start(size_t position, size_t width) {
        table.resize(count << width);
        std::ranges::copy(montgomeryForm(power.base, kLimbBits * count, modulus), entry(1).begin());
        for (size_t index = 2; index >> width == 0; ++index) {
            multiplyLimbs(product, entry(index - 1), entry(1));
            reduceInto(entry(index));
        }
        const LimbSpan first = entry(windowAt(power.exponent, position, width));
        value.assign(first.begin(), first.end());
    }

    void square() {
        squareLimbs(product, value);
        reduceInto(value);
    }

    void multiply(size_t position, size_t width) {
        const size_t digit = windowAt(power.exponent, position, width);
        if (digit == 0) return;
        multiplyLimbs(product, value, entry(digit));
        reduceInto(value);
    }

    void leave() {
        const bool odd = (power.exponent[0] & 1) != 0;
        std::ranges::fill(product, 0);
        const LimbView base = significant(power.base);
        const LimbView last = odd ? base : LimbView(kOne);
        multiplyLimbs(LimbSpan(product).first(count + last.size()), value, last);
        reduceInto(value);
    }

    Limbs value;

private:
    LimbSpan entry(size_t index) { return LimbSpan(table).subspan(index * count, count); }

    // result = product / R mod modulus: multiples of the modulus clear the product's limbs from the lowest up.
    void reduceInto(LimbSpan result) {
        Limb carry = 0;
        for (size_t index = 0; index < count; ++index) {
            const LimbSpan part = LimbSpan(product).subspan(index);
            const DoubleLimb above = DoubleLimb{addProduct(part, modulus, part[0] * factor)} + part[count] + carry;
            part[count] = static_cast<Limb>(above);
            carry = highLimb(above);
        }
        const LimbSpan high = LimbSpan(product).subspan(count);
        if (carry != 0 || !isLess(high, modulus)) subtractLimbs(high, modulus);
        std::ranges::copy(high, result.begin());
    }

    const ModularPower& power;
    LimbView modulus;
    size_t count;   // limbs of the modulus, and of every number in the form
    Limb factor;    // -1 / modulus modulo 2^64
    Limbs product;  // of two numbers, before it is reduced
    Limbs table;
};

}  // namespace

Limbs portablePower(const ModularPower& power) {
    PortableForm form(power);
    raiseByWindows(form, bitLength(power.exponent));
    return std::move(form.value);
}

}  // namespace velmora
