#include "tests/support/tls_records.h"

#include <gtest/gtest.h>

#include "tls/wire.h"

namespace velmora {

ByteString MakeRecord(uint8_t type, std::string_view fragment, uint16_t version) {
    return WireWriter().U8(type).U16(version).Bytes16(fragment).Written();
}

std::vector<WireRecord> CutRecords(std::string_view bytes) {
    std::vector<WireRecord> records;
    for (WireReader reader(bytes); !reader.Rest().empty();) {
        const bool wholeHeader = reader.Rest().size() >= 5;
        const uint8_t type = reader.U8();
        const uint16_t version = reader.U16();
        const uint16_t length = reader.U16();
        const bool wholeRecord = wholeHeader && reader.Rest().size() >= length;
        EXPECT_TRUE(wholeRecord) << "the bytes end within a record";
        records.push_back({type, version, reader.Bytes(length)});
    }
    return records;
}

std::vector<int> RecordTypes(std::string_view bytes) {
    std::vector<int> types;
    for (const WireRecord& record : CutRecords(bytes)) types.push_back(record.type);
    return types;
}

}  // namespace velmora
