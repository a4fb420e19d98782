#include "tests/support/tls_records.h"

#include <stdexcept>

#include "config/big_endian.h"

namespace velmora {

ByteString RecordBytes(const WireRecord& record) {
    ByteString bytes;
    AppendBigEndian(bytes, static_cast<uint8_t>(record.type), 1);
    AppendBigEndian(bytes, record.version, 2);
    AppendBigEndian(bytes, record.fragment.size(), 2);
    return bytes + record.fragment;
}

ByteString MakeRecord(uint8_t type, std::string_view fragment, uint16_t version) {
    return RecordBytes({static_cast<RecordType>(type), version, ByteString(fragment)});
}

ByteString JoinRecords(const std::vector<WireRecord>& records) {
    ByteString bytes;
    for (const WireRecord& record : records) bytes += RecordBytes(record);
    return bytes;
}

std::vector<WireRecord> WholeRecords(std::string_view bytes) {
    std::vector<WireRecord> records;
    while (bytes.size() >= kRecordHeaderBytes) {
        const size_t recordBytes = kRecordHeaderBytes + ReadBigEndian(bytes.substr(3, 2));
        if (bytes.size() < recordBytes) break;
        records.push_back({static_cast<RecordType>(bytes[0]), static_cast<uint16_t>(ReadBigEndian(bytes.substr(1, 2))),
                           ByteString(bytes.substr(kRecordHeaderBytes, recordBytes - kRecordHeaderBytes))});
        bytes.remove_prefix(recordBytes);
    }
    return records;
}

std::vector<WireRecord> CutRecords(std::string_view bytes) {
    std::vector<WireRecord> records = WholeRecords(bytes);
    if (JoinRecords(records).size() != bytes.size()) throw std::invalid_argument("the bytes end within a record");
    return records;
}

std::vector<int> RecordTypes(std::string_view bytes) {
    std::vector<int> types;
    for (const WireRecord& record : CutRecords(bytes)) types.push_back(static_cast<int>(record.type));
    return types;
}

}  // namespace velmora
