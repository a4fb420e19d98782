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

// The records that bytes consist of. Bytes that end within a record throw std::invalid_argument.
std::vector<WireRecord> CutRecords(std::string_view bytes);

// The bytes of records, one behind the other.
ByteString JoinRecords(const std::vector<WireRecord>& records);

// The types of the records that bytes consist of.
std::vector<int> RecordTypes(std::string_view bytes);

}  // namespace velmora
