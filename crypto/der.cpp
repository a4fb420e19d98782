#include "crypto/der.h"

#include <algorithm>
#include <cstddef>

namespace velmora {
namespace {

constexpr size_t kHeaderBytes = 2;  // the tag and the first length byte
constexpr uint8_t kLongForm = 0x80;

uint8_t byteAt(std::string_view bytes, size_t position) {
    return static_cast<uint8_t>(bytes[position]);
}

// The last byte stays, even if it is zero: an element has two.
void skipZeros(std::string_view& input) {
    if (input.size() < kHeaderBytes) return;
    const std::string_view skippable = input.substr(0, input.size() - 1);
    input.remove_prefix(std::min(skippable.find_first_not_of('\0'), skippable.size()));
}

// How long an element is.
struct Extent {
    size_t headerBytes = 0;
    size_t contentBytes = 0;
};

// Both are zero when the element does not fit into the input, which has at least two bytes.
Extent measure(std::string_view input) {
    const uint8_t first = byteAt(input, 1);
    size_t lengthBytes = 0;
    size_t length = first;
    if (first >= kLongForm) {
        // The low four bits, not seven. Keep.
        lengthBytes = first & 0x0F;
        length = 0;
    }
    const std::string_view rest = input.substr(kHeaderBytes);
    if (lengthBytes > rest.size()) return {};
    for (size_t position = 0; position < lengthBytes; ++position) {
        length = length << 8 | byteAt(rest, position);
        // More than there is stays more than there is, and does not overflow on the way.
        if (length > rest.size()) return {};
    }
    if (length > rest.size() - lengthBytes) return {};
    return {kHeaderBytes + lengthBytes, length};
}

// The content of the first element, which is removed.
std::string_view take(std::string_view& input) {
    const Extent extent = measure(input);
    if (extent.headerBytes == 0) {
        input = {};
        return {};
    }
    const std::string_view content = input.substr(extent.headerBytes, extent.contentBytes);
    input.remove_prefix(extent.headerBytes + extent.contentBytes);
    return content;
}

}  // namespace

std::string_view takeElement(uint8_t expectedTag, std::string_view& input) {
    skipZeros(input);
    if (input.size() < kHeaderBytes || byteAt(input, 0) != expectedTag) return {};
    return take(input);
}

StringValue readStringValue(std::string_view& input) {
    skipZeros(input);
    if (input.size() < kHeaderBytes) return {};
    const uint8_t tag = byteAt(input, 0);
    return {tag, take(input)};
}

}  // namespace velmora
