#include "tests/support/tls_records.h"

#include <stdexcept>

#include "config/big_endian.h"
#include "tls/protocol.h"

namespace velmora {

ByteString MakeRecord(uint8_t type, std::string_view fragment, uint16_t version) {
    ByteString bytes;
    AppendBigEndian(bytes, type, 1);
    AppendBigEndian(bytes, version, 2);
    AppendBigEndian(bytes, fragment.size(), 2);
    return bytes.append(fragment);
}

std::vector<WireRecord> CutRecords(std::string_view bytes) {
    std::vector<WireRecord> records;
    while (!bytes.empty()) {
        const bool wholeHeader = bytes.size() >= kRecordHeaderBytes;
        const size_t length = wholeHeader ? ReadBigEndian(bytes.substr(3, 2)) : 0;
        if (!wholeHeader || bytes.size() - kRecordHeaderBytes < length) {
            throw std::invalid_argument("the bytes end within a record");
        }
        records.push_back({static_cast<uint8_t>(bytes[0]), static_cast<uint16_t>(ReadBigEndian(bytes.substr(1, 2))),
                           ByteString(bytes.substr(kRecordHeaderBytes, length))});
        bytes.remove_prefix(kRecordHeaderBytes + length);
    }
    return records;
}

ByteString JoinRecords(const std::vector<WireRecord>& records) {
    ByteString bytes;
    for (const WireRecord& record : records) bytes += MakeRecord(record.type, record.fragment, record.version);
    return bytes;
}

std::vector<int> RecordTypes(std::string_view bytes) {
    std::vector<int> types;
    for (const WireRecord& record : CutRecords(bytes)) types.push_back(record.type);
    return types;
}

}  // namespace velmora
