#include "tests/interop/record_editing.h"

#include <algorithm>
#include <vector>

#include "tests/support/tls_records.h"

namespace velmora::interop {

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
