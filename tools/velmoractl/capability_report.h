#pragma once

#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora::ctl {

// TAPI's capability structures, read from the bytes that the provider filled and put into words. Their layout is that
// of TSPI version 2.2; later versions only add fields behind it.

inline constexpr size_t kDevCapsFixedBytes = 268;      // LINEDEVCAPS, up to and including PermanentLineGuid
inline constexpr size_t kAddressCapsFixedBytes = 228;  // LINEADDRESSCAPS

struct CapabilityLine {
    ByteString field;  // TAPI's name; a text's size and offset fields make one line, without "dw" and "Size"
    ByteString value;  // number, text or identifier; a set of flags in hexadecimal
    std::vector<ByteString> names;  // of the flags that are set
};

// The fields of a LINEDEVCAPS that are not zero, in its order. Fewer bytes than the fixed part give no lines, and a
// text that does not lie within the bytes is empty.
std::vector<CapabilityLine> DescribeDevCaps(const ByteString& bytes);

// Those of a LINEADDRESSCAPS, likewise.
std::vector<CapabilityLine> DescribeAddressCaps(const ByteString& bytes);

// The value of one of the lines; empty when there is no such field.
ByteString FieldValue(const std::vector<CapabilityLine>& lines, std::string_view field);

}  // namespace velmora::ctl
