#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// A signed integer of any size, the number type of RSA. Numbers enter and leave the system as unsigned big-endian
// bytes; the sign exists for what happens in between.
//
// Every operation gives a normalised number, and relies on being given one. Nothing reports an error, and dividing by
// zero gives zero. Nothing here takes the same time for every value.
struct BigInt {
    uint8_t negative = 0;  // 1 for a negative number; zero is never negative
    ByteString magnitude;  // 32-bit limbs, lowest first, each little-endian; the top limb is never zero

    BigInt() = default;
    explicit BigInt(int32_t number);

    bool operator==(const BigInt&) const = default;
};

extern const BigInt kBigIntZero;
extern const BigInt kBigIntOne;

// The number that unsigned big-endian bytes stand for; zero for none.
BigInt fromBytes(const ByteString& bytes);

// The absolute value in big-endian bytes, four for each limb, without the zero bytes at the front by which they are
// longer than minimumLength. Nothing is ever padded: one limb of 1 gives 01 for a minimum of 0 or less, 00 00 01 for 3,
// and 00 00 00 01 for 4 and for 8. Zero is the empty string, whatever the minimum. Keep.
ByteString toBytes(const BigInt& number, int32_t minimumLength);

bool isSmall(const BigInt& number, int32_t value);  // number == value

// |a| > |b|
bool compareMagnitude(const BigInt& a, const BigInt& b);

BigInt abs(const BigInt& number);

BigInt add(const BigInt& left, const BigInt& right);
BigInt subtract(const BigInt& left, const BigInt& right);
void addInPlace(BigInt& sum, const BigInt& addend);                  // the two may be the same object
void subtractInPlace(BigInt& difference, const BigInt& subtrahend);  // likewise

BigInt multiply(const BigInt& left, const BigInt& right);

// The quotient and the remainder of the absolute values. Either is negative when just one of the arguments is: -7 mod 3
// is -1, and so is 7 mod -3, other than in most languages. Keep. A divisor of zero gives zero for both.
BigInt divide(const BigInt& dividend, const BigInt& divisor);
BigInt mod(const BigInt& dividend, const BigInt& divisor);

// number * 2^bits; number itself when bits is below 1.
BigInt shiftLeft(const BigInt& number, int32_t bits);

// A magnitude shifted to the left, or by a negative count to the right, where bits leave it at the bottom.
ByteString shift(const ByteString& magnitude, int32_t bits);

// The quotient of the absolute values, with number's sign.
BigInt divideSmall(const BigInt& number, uint32_t divisor);

}  // namespace velmora
