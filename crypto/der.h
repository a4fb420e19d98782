#pragma once

#include <cstdint>
#include <string_view>

namespace velmora {

// A reader of DER (ITU-T X.690), tag by tag. It takes elements from the front of an input, which it shortens by them;
// input and contents are views into the bytes that the caller holds, so nothing is copied and a hostile certificate
// costs no more than its own length. Nothing here reports an error: what is not there reads as empty.

inline constexpr uint8_t kDerInteger = 0x02;
inline constexpr uint8_t kDerBitString = 0x03;
inline constexpr uint8_t kDerObjectIdentifier = 0x06;
inline constexpr uint8_t kDerUtf8String = 0x0C;
inline constexpr uint8_t kDerPrintableString = 0x13;
inline constexpr uint8_t kDerT61String = 0x14;
inline constexpr uint8_t kDerSequence = 0x30;
inline constexpr uint8_t kDerSet = 0x31;
inline constexpr uint8_t kDerVersion = 0xA0;     // context tag 0
inline constexpr uint8_t kDerExtensions = 0xA3;  // context tag 3

// Takes the next element and returns its content. With another tag than the expected one, or with fewer than two bytes
// left, the result is empty and the element stays.
//
// Zero bytes before an element are skipped for good, whatever comes of it, and so a tag of 0 is never found: that is
// also how the unused-bits byte of a BIT STRING goes. Of a length in the long form, the low four bits of the first byte
// say how many bytes it has, not seven: 0x90 has none and means length 0, and so does 0x80. Keep both.
//
// An element that is longer than what is left, or whose length is cut off, is not there: the result is empty. Nothing
// could be found behind it, so the input is empty then, too.
std::string_view takeElement(uint8_t expectedTag, std::string_view& input);

struct StringValue {
    uint8_t tag = 0;  // the type of the string; 0 when there is no element
    std::string_view content;
};

// Takes the next element, whatever its tag is; otherwise like takeElement.
StringValue readStringValue(std::string_view& input);

}  // namespace velmora
