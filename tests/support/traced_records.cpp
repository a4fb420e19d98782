#include "tests/support/traced_records.h"

#include <gtest/gtest.h>

#include <optional>

#include "tls/cipher_suite.h"
#include "tls/record_protection.h"
#include "tls/wire.h"

namespace velmora {
namespace {

// The order of the key block (RFC 2246, 6.3).
DirectionKeys KeysOf(Endpoint sender, const std::string& keyBlock) {
    constexpr CipherSuite kSuite = kRsaWithAes128Sha;
    WireReader reader(keyBlock);
    DirectionKeys client;
    DirectionKeys server;
    client.macSecret = reader.Bytes(kSuite.macBytes);
    server.macSecret = reader.Bytes(kSuite.macBytes);
    client.key = reader.Bytes(kSuite.keyBytes);
    server.key = reader.Bytes(kSuite.keyBytes);
    client.iv = reader.Bytes(kSuite.ivBytes);
    server.iv = reader.Bytes(kSuite.ivBytes);
    return sender == Endpoint::kClient ? client : server;
}

}  // namespace

ClientHello ReadClientHello(const std::string& bytes) {
    const std::vector<WireRecord> records = WholeRecords(bytes);
    if (records.empty() || records[0].type != RecordType::kHandshake) return {};
    WireReader reader(records[0].fragment);
    if (reader.U8() != static_cast<uint8_t>(HandshakeType::kClientHello)) return {};
    reader.Bytes(3 + 2 + kRandomBytes);
    ClientHello hello;
    hello.sessionId = reader.Bytes(reader.U8());
    hello.suites = reader.Bytes(reader.U16());
    reader.Bytes(reader.U8());
    hello.extensions = reader.Rest();
    return hello;
}

std::vector<WireRecord> DecryptedRecords(const std::string& keyBlock, Endpoint sender, const std::string& bytes) {
    RecordProtection protection = RecordProtection::ForReceiving(kRsaWithAes128Sha, KeysOf(sender, keyBlock));
    std::vector<WireRecord> records;
    bool isProtected = false;
    for (WireRecord& record : WholeRecords(bytes)) {
        if (isProtected) {
            const std::optional<ByteString> content =
                protection.Unprotect(record.type, record.version, record.fragment);
            EXPECT_TRUE(content) << "record " << records.size() << " has a wrong MAC";
            if (!content) break;
            record.fragment = *content;
        }
        isProtected |= record.type == RecordType::kChangeCipherSpec;
        records.push_back(record);
    }
    return records;
}

std::string NextRecordBytes(const std::string& keyBlock, Endpoint sender, const std::string& sentSoFar,
                            const WireRecord& record) {
    RecordProtection protection = RecordProtection::ForSending(kRsaWithAes128Sha, KeysOf(sender, keyBlock));
    bool isProtected = false;
    for (const WireRecord& sent : DecryptedRecords(keyBlock, sender, sentSoFar)) {
        if (isProtected) protection.Protect(sent.type, sent.version, sent.fragment);
        isProtected |= sent.type == RecordType::kChangeCipherSpec;
    }
    WireRecord next = record;
    next.fragment = protection.Protect(record.type, record.version, record.fragment);
    return RecordBytes(next);
}

}  // namespace velmora
