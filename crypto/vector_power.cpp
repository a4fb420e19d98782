#include <immintrin.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <vector>

#include "crypto/cpu_features.h"
#include "crypto/montgomery.h"
#include "crypto/odd_power.h"

namespace velmora {
namespace {

// Numbers are held in digits of 52 bits, each in a 64-bit lane of its own, which leaves room for many sums before a
// carry has to be passed on. R is 2^(52 * digits) and at least four times the modulus: then the product of two numbers
// below twice the modulus, divided by R, is below twice the modulus again, and nothing has to be compared on the way
// (Walter, "Montgomery exponentiation needs no final subtractions").

constexpr size_t kDigitBits = 52;
constexpr Limb kDigitMask = (Limb{1} << kDigitBits) - 1;
constexpr size_t kLanes = 8;  // digits in a register

// Memory that starts where a register can be stored whole.
template <typename Value>
struct RegisterAllocator {
    using value_type = Value;
    static constexpr std::align_val_t kAlignment{64};

    Value* allocate(size_t count) { return static_cast<Value*>(::operator new(count * sizeof(Value), kAlignment)); }
    void deallocate(Value* values, size_t /*count*/) { ::operator delete(values, kAlignment); }
    bool operator==(const RegisterAllocator&) const = default;
};
using Digits = std::vector<Limb, RegisterAllocator<Limb>>;

constexpr size_t digitsFor(size_t modulusBits) {
    return (modulusBits + 2 + kDigitBits - 1) / kDigitBits;
}

void store(LimbSpan digits, LimbView number) {
    for (size_t index = 0; index < digits.size(); ++index) {
        digits[index] = bitsAt(number, index * kDigitBits) & kDigitMask;
    }
}

Limbs load(LimbView digits) {
    Limbs number(digits.size());
    for (size_t index = 0; index < digits.size(); ++index) {
        const size_t position = index * kDigitBits;
        const size_t limb = position / kLimbBits;
        const DoubleLimb placed = DoubleLimb{digits[index]} << position % kLimbBits;
        number[limb] |= static_cast<Limb>(placed);
        if (limb + 1 < number.size()) number[limb + 1] |= highLimb(placed);
    }
    return number;
}

// What one product works on: product = left * right / R mod modulus. They may be the same number.
struct Factors {
    Limb* product;
    const Limb* left;
    const Limb* right;
    const Limb* modulus;
    Limb factor;  // -1 / modulus modulo 2^52
};

// A sum of products on its way. Its lowest digit is kept apart, and the lowest lane counts for nothing.
template <size_t vectors>
struct Sum {
    __m512i vector[vectors];
    Limb lowest;
};

// sum += the lower halves of number * factor
template <size_t vectors>
[[gnu::target("avx512f,avx512ifma"), gnu::always_inline]] inline void addLowHalves(Sum<vectors>& sum,
                                                                                   const Limb* number, __m512i factor) {
#pragma GCC unroll 10
    for (size_t index = 0; index < vectors; ++index) {
        sum.vector[index] =
            _mm512_madd52lo_epu64(sum.vector[index], _mm512_load_si512(number + index * kLanes), factor);
    }
}

// sum += the upper halves of number * factor, where the sum has moved down by one digit already
template <size_t vectors>
[[gnu::target("avx512f,avx512ifma"), gnu::always_inline]] inline void addHighHalves(Sum<vectors>& sum,
                                                                                    const Limb* number,
                                                                                    __m512i factor) {
#pragma GCC unroll 10
    for (size_t index = 0; index < vectors; ++index) {
        sum.vector[index] =
            _mm512_madd52hi_epu64(sum.vector[index], _mm512_load_si512(number + index * kLanes), factor);
    }
}

template <size_t vectors>
[[gnu::target("avx512f,avx512ifma"), gnu::always_inline]] inline void moveDown(Sum<vectors>& sum) {
#pragma GCC unroll 10
    for (size_t index = 0; index < vectors; ++index) {
        const __m512i above = index + 1 < vectors ? sum.vector[index + 1] : _mm512_setzero_si512();
        sum.vector[index] = _mm512_alignr_epi64(above, sum.vector[index], 1);
    }
}

// sum = (sum + left * digit + the multiple of the modulus that clears the lowest digit) / 2^52. The next such multiple
// waits for the new lowest digit, which therefore is computed apart from the vectors.
template <size_t vectors>
[[gnu::target("avx512f,avx512ifma"), gnu::always_inline]] inline void addDigit(Sum<vectors>& sum,
                                                                               const Factors& factors, Limb digit) {
    const DoubleLimb lowest = DoubleLimb{factors.left[0]} * digit + sum.lowest;
    const Limb multiple = static_cast<Limb>(lowest) * factors.factor & kDigitMask;

    const __m512i digits = _mm512_set1_epi64(static_cast<long long>(digit));
    const __m512i multiples = _mm512_set1_epi64(static_cast<long long>(multiple));
    addLowHalves(sum, factors.left, digits);
    const auto second = static_cast<Limb>(sum.vector[0][1]);
    addLowHalves(sum, factors.modulus, multiples);
    moveDown(sum);
    addHighHalves(sum, factors.left, digits);
    addHighHalves(sum, factors.modulus, multiples);

    // Adding the multiple leaves zero in the lowest digit, and a carry unless it was zero before.
    const Limb carry = (static_cast<Limb>(lowest) & kDigitMask) != 0 ? 1 : 0;
    const Limb rest = highLimb(lowest) << (kLimbBits - kDigitBits) | static_cast<Limb>(lowest) >> kDigitBits;
    const Limb high = highLimb(DoubleLimb{factors.modulus[0] << (kLimbBits - kDigitBits)} * multiple);
    const Limb low = factors.modulus[1] * multiple & kDigitMask;
    sum.lowest = rest + second + carry + high + low;
}

// One product, or two that advance in turns, of numbers of so many vectors, with R = 2^(52 * digits).
template <size_t vectors, size_t products>
[[gnu::target("avx512f,avx512ifma")]] void multiplyVectors(const Factors* factors, size_t digits) {
    Sum<vectors> sums[products];
#pragma GCC unroll 2
    for (Sum<vectors>& sum : sums) {
        sum.lowest = 0;
#pragma GCC unroll 10
        for (__m512i& vector : sum.vector) vector = _mm512_setzero_si512();
    }
    for (size_t index = 0; index < digits; ++index) {
#pragma GCC unroll 2
        for (size_t which = 0; which < products; ++which) {
            addDigit(sums[which], factors[which], factors[which].right[index]);
        }
    }
#pragma GCC unroll 2
    for (size_t which = 0; which < products; ++which) {
        Limb* const product = factors[which].product;
#pragma GCC unroll 10
        for (size_t index = 0; index < vectors; ++index) {
            _mm512_store_si512(product + index * kLanes, sums[which].vector[index]);
        }
        // Every digit keeps 52 bits and passes the rest on.
        product[0] = sums[which].lowest;
        Limb carry = 0;
        for (size_t index = 0; index < digits; ++index) {
            carry += product[index];
            product[index] = carry & kDigitMask;
            carry >>= kDigitBits;
        }
    }
}

// The products of numbers up to a size; two at a time only where their sums fit into the registers.
struct Kernel {
    size_t vectors;
    void (*multiplyOne)(const Factors* factors, size_t digits);
    void (*multiplyTwo)(const Factors* factors, size_t digits);
};

constexpr Kernel kKernels[] = {
    {2, multiplyVectors<2, 1>, multiplyVectors<2, 2>},
    {3, multiplyVectors<3, 1>, multiplyVectors<3, 2>},
    {5, multiplyVectors<5, 1>, multiplyVectors<5, 2>},
    {10, multiplyVectors<10, 1>, nullptr},
};

// The least that holds numbers of so many digits; the end of kKernels when none does.
const Kernel* kernelFor(size_t digits) {
    return std::ranges::find_if(kKernels, [=](const Kernel& kernel) { return kernel.vectors * kLanes >= digits; });
}

// One or two powers on their way in Montgomery's form, in step: both have the R of the longer modulus.
class VectorForm {
public:
    // The kernel must hold as many digits, and multiply as many numbers at a time.
    VectorForm(std::span<const ModularPower> modularPowers, size_t digitCount, const Kernel& chosen)
        : powers(modularPowers),
          digits(digitCount),
          kernel(chosen),
          moduli(powers.size() * kernel.vectors * kLanes),
          values(powers.size() * kernel.vectors * kLanes),
          factors(powers.size()) {
        for (size_t which = 0; which < powers.size(); ++which) {
            store(number(moduli, 0, which), powers[which].modulus);
            factors[which].modulus = number(moduli, 0, which).data();
            factors[which].factor = negatedInverse(powers[which].modulus[0]) & kDigitMask;
        }
    }

    // The table holds the powers 0 to 2^width - 1 of each base. The zeroth is for a power whose exponent has a digit of
    // zero where the other's is not.
    void start(size_t position, size_t width) {
        const size_t count = size_t{1} << width;
        table.resize(count * values.size());
        for (size_t which = 0; which < powers.size(); ++which) {
            if (powers.size() > 1) enter(0, which, kOne);
            enter(1, which, powers[which].base);
        }
        for (size_t index = 2; index < count; ++index) {
            for (size_t which = 0; which < powers.size(); ++which) {
                factors[which].product = number(table, index, which).data();
                factors[which].left = number(table, index - 1, which).data();
                factors[which].right = number(table, 1, which).data();
            }
            multiplyEach();
        }
        for (size_t which = 0; which < powers.size(); ++which) {
            const LimbSpan value = number(values, 0, which);
            std::ranges::copy(number(table, digitAt(which, position, width), which), value.begin());
            factors[which].product = value.data();
            factors[which].left = value.data();
        }
    }

    void square() {
        for (Factors& each : factors) each.right = each.left;
        multiplyEach();
    }

    void multiply(size_t position, size_t width) {
        bool needed = false;
        for (size_t which = 0; which < powers.size(); ++which) {
            const size_t digit = digitAt(which, position, width);
            factors[which].right = number(table, digit, which).data();
            needed = needed || digit != 0;
        }
        if (needed) multiplyEach();
    }

    void leave() {
        for (size_t which = 0; which < powers.size(); ++which) {
            const bool odd = (powers[which].exponent[0] & 1) != 0;
            const LimbSpan last = number(table, 0, which);
            store(last, odd ? LimbView(powers[which].base) : LimbView(kOne));
            factors[which].right = last.data();
        }
        multiplyEach();
    }

    Limbs result(size_t which) {
        const LimbView modulus = significant(powers[which].modulus);
        Limbs value = load(number(values, 0, which));
        if (!isLess(value, modulus)) subtractLimbs(value, modulus);
        value.resize(modulus.size());
        return value;
    }

private:
    // Each array holds a number for each power, or a row of such.
    LimbSpan number(Digits& numbers, size_t row, size_t which) const {
        const size_t length = kernel.vectors * kLanes;
        return LimbSpan(numbers).subspan((row * powers.size() + which) * length, length);
    }

    void enter(size_t row, size_t which, LimbView value) {
        store(number(table, row, which), montgomeryForm(value, digits * kDigitBits, powers[which].modulus));
    }

    size_t digitAt(size_t which, size_t position, size_t width) const {
        return windowAt(powers[which].exponent, position, width);
    }

    void multiplyEach() { (powers.size() == 1 ? kernel.multiplyOne : kernel.multiplyTwo)(factors.data(), digits); }

    std::span<const ModularPower> powers;
    size_t digits;
    const Kernel& kernel;
    Digits moduli;
    Digits values;
    Digits table;
    std::vector<Factors> factors;  // of the next products
};

void raiseEach(VectorForm& form, std::span<const ModularPower> powers) {
    size_t exponentBits = 0;
    for (const ModularPower& power : powers) exponentBits = std::max(exponentBits, bitLength(power.exponent));
    raiseByWindows(form, exponentBits);
}

}  // namespace

bool suitsVectors(LimbView modulus) {
    return cpuFeatures().ifma && kernelFor(digitsFor(bitLength(modulus))) != std::end(kKernels);
}

Limbs vectorPower(const ModularPower& power) {
    const size_t digits = digitsFor(bitLength(power.modulus));
    const std::span<const ModularPower> powers(&power, 1);
    VectorForm form(powers, digits, *kernelFor(digits));
    raiseEach(form, powers);
    return form.result(0);
}

std::array<Limbs, 2> vectorPowers(const std::array<ModularPower, 2>& powers) {
    const size_t digits = digitsFor(std::max(bitLength(powers[0].modulus), bitLength(powers[1].modulus)));
    const Kernel& kernel = *kernelFor(digits);
    if (kernel.multiplyTwo == nullptr) return {vectorPower(powers[0]), vectorPower(powers[1])};
    VectorForm form(powers, digits, kernel);
    raiseEach(form, powers);
    return {form.result(0), form.result(1)};
}

}  // namespace velmora
