#include "crypto/big_int.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "crypto/big_int_limbs.h"

namespace velmora {
namespace {

constexpr size_t kStoredLimbBytes = 4;

BigInt normalised(uint8_t negative, ByteString magnitude) {
    BigInt number;
    number.magnitude = std::move(magnitude);
    number.negative = number.magnitude.empty() ? 0 : negative;
    return number;
}

// The bytes from the last to the first.
ByteString reversed(std::string_view bytes) {
    ByteString result(bytes.size(), '\0');
    const char* end = bytes.data() + bytes.size();
    size_t done = 0;
    for (; done + sizeof(uint64_t) <= bytes.size(); done += sizeof(uint64_t)) {
        uint64_t eight = 0;
        end -= sizeof(eight);
        std::memcpy(&eight, end, sizeof(eight));
        eight = __builtin_bswap64(eight);
        std::memcpy(&result[done], &eight, sizeof(eight));
    }
    for (; done < bytes.size(); ++done) result[done] = *--end;
    return result;
}

// The sign of a product or quotient.
uint8_t jointSign(const BigInt& left, const BigInt& right) {
    return left.negative != right.negative ? 1 : 0;
}

ByteString sumOfMagnitudes(const BigInt& left, const BigInt& right) {
    const Limbs addend = limbsOf(right.magnitude);
    Limbs sum = limbsOf(left.magnitude);
    sum.resize(std::max(sum.size(), addend.size()) + 1);
    addLimbs(sum, addend);
    return magnitudeOf(sum);
}

ByteString differenceOfMagnitudes(const BigInt& larger, const BigInt& smaller) {
    Limbs difference = limbsOf(larger.magnitude);
    subtractLimbs(difference, limbsOf(smaller.magnitude));
    return magnitudeOf(difference);
}

// left + right, with right's sign given apart.
BigInt addSigned(const BigInt& left, const BigInt& right, uint8_t rightNegative) {
    if (left.negative == rightNegative) return normalised(left.negative, sumOfMagnitudes(left, right));
    if (compareMagnitude(right, left)) return normalised(rightNegative, differenceOfMagnitudes(right, left));
    return normalised(left.negative, differenceOfMagnitudes(left, right));
}

}  // namespace

const BigInt kBigIntZero(0);
const BigInt kBigIntOne(1);

BigInt::BigInt(int32_t number) {
    if (number < 0) negative = 1;
    const auto absolute = static_cast<Limb>(number < 0 ? -int64_t{number} : int64_t{number});
    magnitude = magnitudeOf(LimbView(&absolute, 1));
}

BigInt fromBytes(const ByteString& bytes) {
    const size_t zeros = std::min(bytes.find_first_not_of('\0'), bytes.size());
    BigInt number;
    number.magnitude = reversed(std::string_view(bytes).substr(zeros));
    const size_t limbs = (number.magnitude.size() + kStoredLimbBytes - 1) / kStoredLimbBytes;
    number.magnitude.resize(limbs * kStoredLimbBytes);
    return number;
}

ByteString toBytes(const BigInt& number, int32_t minimumLength) {
    const auto minimum = static_cast<size_t>(std::max(minimumLength, 0));
    size_t length = number.magnitude.size();
    while (length > minimum && number.magnitude[length - 1] == '\0') --length;
    return reversed(std::string_view(number.magnitude).substr(0, length));
}

bool isSmall(const BigInt& number, int32_t value) {
    return number == BigInt(value);
}

bool compareMagnitude(const BigInt& a, const BigInt& b) {
    if (a.magnitude.size() != b.magnitude.size()) return a.magnitude.size() > b.magnitude.size();
    // Byte by byte from the top, whatever the size of a limb.
    const auto isLess = [](char x, char y) { return static_cast<unsigned char>(x) < static_cast<unsigned char>(y); };
    return std::lexicographical_compare(b.magnitude.rbegin(), b.magnitude.rend(), a.magnitude.rbegin(),
                                        a.magnitude.rend(), isLess);
}

BigInt abs(const BigInt& number) {
    return normalised(0, number.magnitude);
}

BigInt add(const BigInt& left, const BigInt& right) {
    return addSigned(left, right, right.negative);
}

BigInt subtract(const BigInt& left, const BigInt& right) {
    return addSigned(left, right, right.negative == 0 ? 1 : 0);
}

void addInPlace(BigInt& sum, const BigInt& addend) {
    sum = add(sum, addend);
}

void subtractInPlace(BigInt& difference, const BigInt& subtrahend) {
    difference = subtract(difference, subtrahend);
}

BigInt multiply(const BigInt& left, const BigInt& right) {
    const Limbs leftLimbs = limbsOf(left.magnitude);
    const Limbs rightLimbs = limbsOf(right.magnitude);
    Limbs product(leftLimbs.size() + rightLimbs.size());
    multiplyLimbs(product, leftLimbs, rightLimbs);
    return normalised(jointSign(left, right), magnitudeOf(product));
}

BigInt divide(const BigInt& dividend, const BigInt& divisor) {
    if (divisor.magnitude.empty()) return {};
    const Division division = divideLimbs(limbsOf(dividend.magnitude), limbsOf(divisor.magnitude));
    return normalised(jointSign(dividend, divisor), magnitudeOf(division.quotient));
}

BigInt mod(const BigInt& dividend, const BigInt& divisor) {
    if (divisor.magnitude.empty()) return {};
    const Division division = divideLimbs(limbsOf(dividend.magnitude), limbsOf(divisor.magnitude));
    return normalised(jointSign(dividend, divisor), magnitudeOf(division.remainder));
}

BigInt shiftLeft(const BigInt& number, int32_t bits) {
    return bits < 1 ? number : normalised(number.negative, shift(number.magnitude, bits));
}

ByteString shift(const ByteString& magnitude, int32_t bits) {
    const size_t distance = static_cast<size_t>(bits < 0 ? -int64_t{bits} : int64_t{bits});
    return magnitudeOf(bits < 0 ? shiftedDown(limbsOf(magnitude), distance) : shiftedUp(limbsOf(magnitude), distance));
}

BigInt divideSmall(const BigInt& number, uint32_t divisor) {
    if (divisor == 0) return {};
    if (divisor == 2) return normalised(number.negative, shift(number.magnitude, -1));
    const Limb limb = divisor;
    const Division division = divideLimbs(limbsOf(number.magnitude), LimbView(&limb, 1));
    return normalised(number.negative, magnitudeOf(division.quotient));
}

}  // namespace velmora
