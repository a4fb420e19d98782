#include "fuzzing/support/keyed_peer.h"

#include "crypto/rsa.h"
#include "tests/support/tls_records.h"
#include "tls/wire.h"

namespace velmora {
namespace {

const ByteString kRandom(kRandomBytes, 'r');

// What the endpoint under test draws, too.
ByteString PreMaster(uint16_t version) {
    return WireWriter().U16(version).Bytes(ByteString(kPreMasterSecretBytes - 2, '\x5A')).Written();
}

}  // namespace

KeyedPeer::KeyedPeer(Endpoint endpoint, uint16_t protocolVersion, const CipherSuite& cipherSuite)
    : self(endpoint), version(protocolVersion), suite(cipherSuite) {}

void KeyedPeer::StartOver() {
    transcript = {};
    waiting.clear();
    sending = {};
    receiving = {};
}

void KeyedPeer::Read(const ByteString& stream) {
    for (const WireRecord& record : WholeRecords(stream)) {
        const std::optional<ByteString> content = receiving.Unprotect(record.type, version, record.fragment);
        if (!content) return;
        if (record.type == RecordType::kHandshake) TakeMessages(*content);
        if (record.type != RecordType::kChangeCipherSpec) continue;
        receiving = RecordProtection::ForReceiving(suite, IsClient() ? DeriveKeys().server : DeriveKeys().client);
    }
}

// Both hellos have their random behind the version, and then the session ID.
void KeyedPeer::TakeMessages(std::string_view messages) {
    transcript.Append(messages);
    for (WireReader reader(messages); !reader.Rest().empty();) {
        const auto type = static_cast<HandshakeType>(reader.U8());
        const ByteString body = reader.Bytes(reader.U24());
        if (type == HandshakeType::kClientHello) clientRandom = body.substr(2, kRandomBytes);
        if (type != HandshakeType::kServerHello) continue;
        serverRandom = body.substr(2, kRandomBytes);
        WireReader rest(std::string_view(body).substr(2 + kRandomBytes));
        sessionId = rest.Bytes(rest.U8());
    }
}

ByteString KeyedPeer::Record(RecordType type, std::string_view content) {
    return MakeRecord(static_cast<uint8_t>(type), sending.Protect(type, version, content), version);
}

ByteString KeyedPeer::Message(HandshakeType type, std::string_view body) {
    const ByteString message = WireWriter().U8(static_cast<uint8_t>(type)).Bytes24(body).Written();
    if (type != HandshakeType::kHelloRequest) transcript.Append(message);
    waiting += message;
    return TakeLeavingRecords();
}

ByteString KeyedPeer::TakeLeavingRecords() {
    std::string_view leaving = std::string_view(waiting).substr(0, packing.leavingBytes);
    const size_t leavingBytes = leaving.size();
    const size_t recordBytes = (leavingBytes + packing.records - 1) / packing.records;
    ByteString records;
    while (!leaving.empty()) {
        const std::string_view content = leaving.substr(0, recordBytes);
        records += Record(RecordType::kHandshake, content);
        leaving.remove_prefix(content.size());
    }
    waiting.erase(0, leavingBytes);
    return records;
}

ByteString KeyedPeer::ClientHello() {
    clientRandom = kRandom;
    WireWriter hello;
    hello.U16(version).Bytes(clientRandom).Bytes8(sessionId).Bytes16(WireWriter().U16(suite.number).Written());
    return Message(HandshakeType::kClientHello, hello.U8(1).U8(kNullCompression).Written());
}

ByteString KeyedPeer::ServerHello() {
    serverRandom = kRandom;
    WireWriter hello;
    hello.U16(version).Bytes(serverRandom).Bytes8(sessionId).U16(suite.number).U8(kNullCompression);
    return Message(HandshakeType::kServerHello, hello.Written());
}

ByteString KeyedPeer::ClientKeyExchange(const ByteString& exponent, const ByteString& modulus) {
    ByteString block("\x00\x02", 2);
    block += ByteString(modulus.size() - kPreMasterSecretBytes - 3, 'x') + '\0' + PreMaster(version);
    RsaKey key;
    setPublicKey(key, exponent, modulus);
    const ByteString encrypted = rsaPublic(key, block);
    return Message(HandshakeType::kClientKeyExchange,
                   version >= kTls10 ? WireWriter().Bytes16(encrypted).Written() : encrypted);
}

ByteString KeyedPeer::ChangeCipherSpec() {
    const ByteString record = Record(RecordType::kChangeCipherSpec, "\x01");
    sending = RecordProtection::ForSending(suite, IsClient() ? DeriveKeys().client : DeriveKeys().server);
    return record;
}

ByteString KeyedPeer::Finished() {
    return Message(HandshakeType::kFinished, VerifyData(version, masterSecret, self, transcript));
}

// RFC 2246, 6.3. Derived once for each pair of randoms, since it takes longer than most of what is tested.
const KeyedPeer::Keys& KeyedPeer::DeriveKeys() {
    const ByteString randoms = clientRandom + serverRandom;
    if (keys && keys->randoms == randoms) return *keys;
    // A suite that is not known has no key exchange.
    masterSecret = suite.IsKnown() ? MasterSecret(version, PreMaster(version), clientRandom, serverRandom) : "";
    const ByteString block = KeyBlock(version, masterSecret, clientRandom, serverRandom,
                                      2 * (suite.macBytes + suite.keyBytes + suite.ivBytes));
    keys = Keys{.randoms = randoms, .client = {}, .server = {}};
    WireReader reader(block);
    for (DirectionKeys* direction : {&keys->client, &keys->server}) {
        direction->macSecret = reader.Bytes(suite.macBytes);
    }
    for (DirectionKeys* direction : {&keys->client, &keys->server}) direction->key = reader.Bytes(suite.keyBytes);
    for (DirectionKeys* direction : {&keys->client, &keys->server}) direction->iv = reader.Bytes(suite.ivBytes);
    return *keys;
}

}  // namespace velmora
