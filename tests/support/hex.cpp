#include "tests/support/hex.h"

namespace velmora {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

}  // namespace

ByteString toHex(const ByteString& bytes) {
    ByteString digits;
    for (const char byte : bytes) {
        digits += kDigits[static_cast<unsigned char>(byte) >> 4];
        digits += kDigits[static_cast<unsigned char>(byte) & 0xF];
    }
    return digits;
}

ByteString fromHex(const ByteString& digits) {
    const ByteString known = kDigits;
    ByteString bytes;
    size_t high = ByteString::npos;
    for (const char digit : digits) {
        if (digit == ' ') continue;
        const size_t value = known.find(digit);
        if (high == ByteString::npos) {
            high = value;
        } else {
            bytes += static_cast<char>(high << 4 | value);
            high = ByteString::npos;
        }
    }
    return bytes;
}

}  // namespace velmora
