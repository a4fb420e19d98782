#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// A TLS record as it stands on the wire.
struct WireRecord {
    uint8_t type;
    uint16_t version;
    ByteString fragment;

    bool operator==(const WireRecord&) const = default;
};

// The bytes of a record. The fragment has at most 65,535 bytes.
ByteString MakeRecord(uint8_t type, std::string_view fragment, uint16_t version = 0x0301);

// The records that bytes consist of. Bytes that are no whole record are a test failure.
std::vector<WireRecord> CutRecords(std::string_view bytes);

// The types of the records that bytes consist of.
std::vector<int> RecordTypes(std::string_view bytes);

}  // namespace velmora
