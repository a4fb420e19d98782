#include "tests/interop/record_editing.h"

#include <algorithm>

#include "config/big_endian.h"

namespace velmora::interop {

std::vector<WireRecord> CutRecords(const ByteString& bytes) {
    std::vector<WireRecord> records;
    for (size_t position = 0; position < bytes.size();) {
        const auto type = static_cast<RecordType>(bytes.at(position));
        const auto version = static_cast<uint16_t>(ReadBigEndian(bytes.substr(position + 1, 2)));
        const size_t fragmentBytes = ReadBigEndian(bytes.substr(position + 3, 2));
        records.push_back({type, version, bytes.substr(position + kRecordHeaderBytes, fragmentBytes)});
        position += kRecordHeaderBytes + fragmentBytes;
    }
    return records;
}

ByteString JoinRecords(const std::vector<WireRecord>& records) {
    ByteString bytes;
    for (const WireRecord& record : records) {
        AppendBigEndian(bytes, static_cast<uint8_t>(record.type), 1);
        AppendBigEndian(bytes, record.version, 2);
        AppendBigEndian(bytes, record.fragment.size(), 2);
        bytes += record.fragment;
    }
    return bytes;
}

ByteString WithHandshakeInOneRecord(const ByteString& bytes) {
    std::vector<WireRecord> joined;
    bool isProtected = false;
    for (const WireRecord& record : CutRecords(bytes)) {
        isProtected |= record.type == RecordType::kChangeCipherSpec;
        if (!isProtected && record.type == RecordType::kHandshake && !joined.empty() &&
            joined.back().fragment.size() + record.fragment.size() <= kFragmentMaxBytes) {
            joined.back().fragment += record.fragment;
        } else {
            joined.push_back(record);
        }
    }
    return JoinRecords(joined);
}

ByteString WithHandshakeInPieces(const ByteString& bytes, size_t pieceBytes) {
    std::vector<WireRecord> pieces;
    bool isProtected = false;
    for (const WireRecord& record : CutRecords(bytes)) {
        isProtected |= record.type == RecordType::kChangeCipherSpec;
        if (isProtected || record.type != RecordType::kHandshake) {
            pieces.push_back(record);
            continue;
        }
        for (size_t position = 0; position < record.fragment.size(); position += pieceBytes) {
            pieces.push_back({record.type, record.version, record.fragment.substr(position, pieceBytes)});
        }
    }
    return JoinRecords(pieces);
}

ByteString WithLastByteChanged(const ByteString& bytes, RecordType type) {
    std::vector<WireRecord> records = CutRecords(bytes);
    const auto first = std::ranges::find(records, type, &WireRecord::type);
    if (first != records.end()) first->fragment.back() = static_cast<char>(first->fragment.back() ^ 1);
    return JoinRecords(records);
}

}  // namespace velmora::interop
