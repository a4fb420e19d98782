#include "crypto/odd_power.h"

#include <gtest/gtest.h>

#include <random>

#include "crypto/cpu_features.h"

namespace velmora {
namespace {

// A number of just so many bits.
Limbs randomLimbs(std::mt19937_64& random, size_t bits) {
    const size_t count = (bits + kLimbBits - 1) / kLimbBits;
    Limbs limbs(count);
    // Runs of ones and zeros in between, where carries travel far.
    for (Limb& limb : limbs) limb = random() % 3 == 0 ? Limb{0} - random() % 2 : random();
    Limbs number = shiftedUp(LimbView(kOne), bits - 1);
    addLimbs(number, shiftedDown(limbs, count * kLimbBits - (bits - 1)));
    return resized(number, count);
}

ModularPower randomPower(std::mt19937_64& random, size_t modulusBits, size_t exponentBits) {
    ModularPower power;
    power.modulus = randomLimbs(random, modulusBits);
    power.modulus[0] |= 1;
    power.exponent = randomLimbs(random, exponentBits);
    power.base = divideLimbs(randomLimbs(random, modulusBits + 64), power.modulus).remainder;
    return power;
}

// By squarings and products that are each divided: slow, and nothing in common with the ways under test but the
// division.
Limbs plainPower(const ModularPower& power) {
    Limbs value = {1};
    for (size_t position = bitLength(power.exponent); position-- > 0;) {
        Limbs product(2 * value.size());
        multiplyLimbs(product, value, value);
        value = divideLimbs(product, power.modulus).remainder;
        if ((bitsAt(power.exponent, position) & 1) == 0) continue;
        product.resize(value.size() + power.base.size());
        multiplyLimbs(product, value, power.base);
        value = divideLimbs(product, power.modulus).remainder;
    }
    return resized(value, power.modulus.size());
}

// Sizes around a limb's, a vector digit's and a register's, and exponents around each width of a window.
constexpr size_t kModulusBits[] = {2,   3,   51,   52,   53,   63,   64,   65,   128,  414,  415,  512,  829, 830,
                                   831, 832, 1024, 1247, 1248, 1249, 1536, 2048, 2078, 2079, 3072, 4096, 4158};
constexpr size_t kExponentBits[] = {2, 17, 24, 25, 80, 81};

TEST(PortablePower, AgreesWithDividedProducts) {
    std::mt19937_64 random(1);
    for (const size_t modulusBits : kModulusBits) {
        for (const size_t exponentBits : kExponentBits) {
            const ModularPower power = randomPower(random, modulusBits, exponentBits);
            ASSERT_EQ(portablePower(power), plainPower(power)) << modulusBits << " " << exponentBits;
        }
    }
    for (const size_t exponentBits : {240U, 241U, 1024U, 1025U}) {
        const ModularPower power = randomPower(random, 320, exponentBits);
        ASSERT_EQ(portablePower(power), plainPower(power)) << exponentBits;
    }
}

TEST(PortablePower, TakesASizeThatNoRegisterHolds) {
    std::mt19937_64 random(2);
    const ModularPower power = randomPower(random, 5000, 30);
    EXPECT_EQ(portablePower(power), plainPower(power));
}

class VectorPower : public testing::Test {
protected:
    void SetUp() override {
        if (!cpuFeatures().ifma) GTEST_SKIP() << "This processor has no products of 52-bit vectors.";
    }
};

TEST_F(VectorPower, AgreesWithThePortableWay) {
    std::mt19937_64 random(3);
    for (const size_t modulusBits : kModulusBits) {
        for (const size_t exponentBits : {2U, 17U, 24U, 25U, 80U, 81U, 240U, 241U, 1024U, 1025U}) {
            const ModularPower power = randomPower(random, modulusBits, exponentBits);
            ASSERT_TRUE(suitsVectors(power.modulus));
            ASSERT_EQ(vectorPower(power), portablePower(power)) << modulusBits << " " << exponentBits;
        }
    }
}

TEST_F(VectorPower, TakesTwoOfDifferentSizesAtATime) {
    std::mt19937_64 random(4);
    for (const size_t modulusBits : kModulusBits) {
        for (const size_t otherBits : {size_t{64}, size_t{512}, modulusBits, size_t{1024}, size_t{3000}}) {
            const ModularPower one = randomPower(random, modulusBits, 100);
            const ModularPower other = randomPower(random, otherBits, 30);
            const std::array<Limbs, 2> both = vectorPowers({one, other});
            ASSERT_EQ(both[0], portablePower(one)) << modulusBits << " " << otherBits;
            ASSERT_EQ(both[1], portablePower(other)) << modulusBits << " " << otherBits;
        }
    }
}

TEST_F(VectorPower, CarriesThroughDigitsOfAllOnes) {
    for (const size_t bits : {52U, 104U, 512U, 1024U, 2048U, 4096U}) {
        ModularPower power;
        power.modulus = shiftedUp(LimbView(kOne), bits);
        subtractLimbs(power.modulus, LimbView(kOne));
        power.modulus = Limbs(significant(power.modulus).begin(), significant(power.modulus).end());
        power.base = power.modulus;
        subtractLimbs(power.base, LimbView(kOne));
        power.exponent = {65537};
        EXPECT_EQ(vectorPower(power), power.base) << bits;
        power.exponent = {65536};
        EXPECT_EQ(vectorPower(power), resized(LimbView(kOne), power.modulus.size())) << bits;
    }
}

TEST_F(VectorPower, DoesNotSuitMoreThanTheRegistersHold) {
    EXPECT_TRUE(suitsVectors(shiftedUp(LimbView(kOne), 4157)));
    EXPECT_FALSE(suitsVectors(shiftedUp(LimbView(kOne), 4158)));
}

}  // namespace
}  // namespace velmora
