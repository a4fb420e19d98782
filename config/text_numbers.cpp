#include "config/text_numbers.h"

#include <charconv>
#include <limits>
#include <stdexcept>

namespace velmora {
namespace {

bool IsSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

}  // namespace

ByteString DecimalText(int64_t number) {
    char digits[std::numeric_limits<int64_t>::digits10 + 2];  // one digit more, and the sign
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof(digits), number);
    return ByteString(digits, result.ptr);
}

int32_t ParseInt(std::string_view text) {
    size_t position = 0;
    while (position < text.size() && IsSpace(text[position])) ++position;

    bool negative = false;
    if (position < text.size() && (text[position] == '-' || text[position] == '+')) {
        negative = text[position] == '-';
        ++position;
    }
    if (position == text.size() || !IsDigit(text[position])) throw std::invalid_argument("invalid stoi argument");

    const int64_t limit =
        negative ? -int64_t{std::numeric_limits<int32_t>::min()} : std::numeric_limits<int32_t>::max();
    int64_t magnitude = 0;
    for (; position < text.size() && IsDigit(text[position]); ++position) {
        magnitude = magnitude * 10 + (text[position] - '0');
        if (magnitude > limit) throw std::out_of_range("stoi argument out of range");
    }
    return static_cast<int32_t>(negative ? -magnitude : magnitude);
}

ByteString HexText(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    ByteString text;
    text.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        text += kDigits[static_cast<unsigned char>(byte) >> 4];
        text += kDigits[static_cast<unsigned char>(byte) & 0xF];
    }
    return text;
}

}  // namespace velmora
