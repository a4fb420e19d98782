#pragma once

#include <cstdint>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// Numbers and bytes as text, in one form for registry values, log records and XML, free of the C library's locale.

// The decimal text of number: "-" when negative, no leading zeros.
ByteString DecimalText(int64_t number);

// The number at the start of text, in the rule of std::stoi with base 10: leading white space and one sign are taken,
// whatever follows the digits is ignored.
// No digit there throws std::invalid_argument("invalid stoi argument"); a number outside 32 bits throws
// std::out_of_range("stoi argument out of range").
int32_t ParseInt(std::string_view text);

// Bytes in lower-case hexadecimal, two digits a byte, the high one first.
ByteString HexText(std::string_view bytes);

}  // namespace velmora
