#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora::ctl {

// The names of TAPI's flag constants, from Microsoft's TAPI pages, so that a capability field can be read.

struct FlagTable {
    std::string_view prefix;                  // what the names have in common
    std::span<const std::string_view> names;  // without the prefix, from bit 0 up; empty for a bit without a name
};

extern const FlagTable kAddressModes;
extern const FlagTable kBearerModes;
extern const FlagTable kMediaModes;
extern const FlagTable kDigitModes;
extern const FlagTable kToneModes;
extern const FlagTable kDevCapFlags;
extern const FlagTable kLineFeatures;
extern const FlagTable kAddressSharing;
extern const FlagTable kCallInfoStates;
extern const FlagTable kCallPartyIds;
extern const FlagTable kCallStates;
extern const FlagTable kDialToneModes;
extern const FlagTable kBusyModes;
extern const FlagTable kSpecialInfo;
extern const FlagTable kDisconnectModes;
extern const FlagTable kAddrCapFlags;
extern const FlagTable kCallFeatures;
extern const FlagTable kAddrFeatures;

// The full names of the flags that are set in value, lowest first; bits without a name are shown together, as
// "(0x20 has no name)".
std::vector<ByteString> FlagNames(const FlagTable& table, uint32_t value);

// A 32-bit value as "0x" and its hexadecimal digits, at least digits of them.
ByteString HexText(uint32_t value, size_t digits = 1);

// A code that an entry point returned: its TAPI name when it is one that this provider uses, and its number.
ByteString ResultText(int32_t code);

}  // namespace velmora::ctl
