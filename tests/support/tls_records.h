#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "config/byte_string.h"
#include "tls/protocol.h"

namespace velmora {

// A TLS record as it stands on the wire (RFC 2246, 6.2.1).
struct WireRecord {
    RecordType type = RecordType::kApplicationData;  // any byte
    uint16_t version = kTls10;
    ByteString fragment;  // at most 65,535 bytes

    bool operator==(const WireRecord&) const = default;
};

// The bytes of a record.
ByteString RecordBytes(const WireRecord& record);
ByteString MakeRecord(uint8_t type, std::string_view fragment, uint16_t version = kTls10);

// The bytes of records, one behind the other.
ByteString JoinRecords(const std::vector<WireRecord>& records);

// The whole records that bytes start with; what is behind the last of them is left out.
std::vector<WireRecord> WholeRecords(std::string_view bytes);

// The records that bytes consist of. Bytes that end within a record throw std::invalid_argument.
std::vector<WireRecord> CutRecords(std::string_view bytes);

// The types of the records that bytes consist of.
std::vector<int> RecordTypes(std::string_view bytes);

}  // namespace velmora
