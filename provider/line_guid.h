#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// The permanent identity of the line, laid out as Windows' GUID.
struct LineGuid {
    uint32_t data1 = 0;
    uint16_t data2 = 0;
    uint16_t data3 = 0;
    uint8_t data4[8] = {};
};

// The line's GUID from the text of the guid setting, in the layout 8-4-4-4-12. TAPI stores the result as the line's
// permanent identity, so it must come out the same in every release.
//
// Lower-case letters do not have their usual values: "a0" gives 0xA0, but "0a" gives 0x2A. A text of fewer than 34
// characters throws std::out_of_range("invalid string position").
LineGuid ParseLineGuid(const ByteString& text);

}  // namespace velmora
