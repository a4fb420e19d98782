#include "tests/support/tls_peer.h"

#include "tests/support/seeded_bytes.h"
#include "tests/support/tls_records.h"
#include "tls/wire.h"

namespace velmora {
namespace {

constexpr uint16_t kPeerTls10 = 0x0301;

bool IsAes(uint16_t suite) {
    return suite == 0x002F || suite == 0x0035;
}

const char* MacHash(uint16_t suite) {
    return suite == 0x0004 ? "MD5" : "SHA1";
}

size_t KeyBytes(uint16_t suite) {
    return suite == 0x0035 ? 32 : 16;
}

size_t PadBytes(const ByteString& hash) {
    return hash == "MD5" ? 48 : 40;
}

// MD5(secret, SHA1("A", secret, randoms)), MD5(secret, SHA1("BB", secret, randoms)) and so on (RFC 6101, 6.1
// and 6.2.2).
ByteString Ssl3Expansion(const ByteString& secret, const ByteString& randoms, size_t count) {
    ByteString output;
    for (ByteString salt = "A"; output.size() < count;
         salt = ByteString(salt.size() + 1, static_cast<char>(salt[0] + 1))) {
        output += PeerDigest("MD5", secret + PeerDigest("SHA1", salt + secret + randoms));
    }
    return output.substr(0, count);
}

}  // namespace

ByteString PeerProtection::NextMac(uint8_t type, const ByteString& content) {
    const ByteString counted = WireWriter().U24(0).U24(sequence >> 16).U16(sequence).U8(type).Written();
    ++sequence;
    if (version >= kPeerTls10) {
        return PeerHmac(hash, macSecret, counted + WireWriter().U16(version).Bytes16(content).Written());
    }
    const size_t padBytes = PadBytes(hash);
    const ByteString inner =
        PeerDigest(hash, macSecret + ByteString(padBytes, '\x36') + counted + WireWriter().Bytes16(content).Written());
    return PeerDigest(hash, macSecret + ByteString(padBytes, '\x5C') + inner);
}

TlsPeer::TlsPeer(uint16_t protocolVersion, uint16_t suiteNumber, const TlsIdentity& serverIdentity)
    : headerVersion(protocolVersion), version(protocolVersion), suite(suiteNumber), identity(serverIdentity) {}

size_t TlsPeer::MacBytes() const {
    return suite == 0x0004 ? 16 : 20;
}

bool TlsPeer::BlockMode() const {
    return IsAes(suite);
}

bool TlsPeer::HandshakeWithServer(TlsConnection& server) {
    SeededBytes random(1);
    clientRandom = random.take(32);
    server.Feed(HandshakeRecord(1, WireWriter()
                                       .U16(version)
                                       .Bytes(clientRandom)
                                       .U8(0)
                                       .Bytes16(WireWriter().U16(suite).Written())
                                       .Bytes8(ByteString(1, '\0'))
                                       .Written()));
    const ByteString flight = ReadHandshake(server.Send({}));
    WireReader reader(flight);
    if (reader.U8() != 2 || reader.U24() == 0 || reader.U16() != version) return false;
    serverRandom = reader.Bytes(32);

    const ByteString preMaster = WireWriter().U16(version).Bytes(random.take(46)).Written();
    const ByteString encrypted = PeerRsaEncrypt(identity.privateKey, preMaster);
    server.Feed(HandshakeRecord(16, version >= kPeerTls10 ? WireWriter().Bytes16(encrypted).Written() : encrypted));
    DeriveKeys(preMaster, true);
    server.Feed(Record(20, "\x01"));
    sending = std::move(nextSending);
    server.Feed(HandshakeRecord(20, VerifyData(true)));
    const ByteString expected = VerifyData(false);
    const ByteString finished = ReadHandshake(server.Send({}));
    return finished == WireWriter().U8(20).Bytes24(expected).Written() && server.HandshakeComplete() &&
           !server.Failed();
}

bool TlsPeer::HandshakeWithClient(TlsConnection& client) {
    SeededBytes random(2);
    client.StartClientHandshake();
    clientRandom = ReadHandshake(client.Send({})).substr(6, 32);
    serverRandom = random.take(32);
    client.Feed(HandshakeRecord(2, WireWriter().U16(version).Bytes(serverRandom).U8(0).U16(suite).U8(0).Written()));
    const ByteString list = WireWriter().Bytes24(identity.certificate).Written();
    client.Feed(HandshakeRecord(11, WireWriter().Bytes24(list).Written()));
    client.Feed(HandshakeRecord(14, ""));

    // The keys come out of the first of the three records that answer, and the proof is behind it.
    const ByteString answer = client.Send({});
    const std::vector<WireRecord> records = CutRecords(answer);
    if (records.size() != 3) return false;
    transcript += records[0].fragment;
    DeriveKeys(PeerRsaDecrypt(identity.privateKey, records[0].fragment.substr(6)), false);
    const ByteString expected = VerifyData(true);
    const ByteString finished = ReadHandshake(answer.substr(5 + records[0].fragment.size()));
    if (finished != WireWriter().U8(20).Bytes24(expected).Written()) return false;
    client.Feed(Record(20, "\x01"));
    sending = std::move(nextSending);
    client.Feed(HandshakeRecord(20, VerifyData(false)));
    return client.HandshakeComplete() && !client.Failed();
}

std::vector<PeerRecord> TlsPeer::Read(const ByteString& bytes) {
    std::vector<PeerRecord> records;
    for (const WireRecord& wire : CutRecords(bytes)) {
        PeerRecord record;
        record.type = static_cast<uint8_t>(wire.type);
        record.version = wire.version;
        record.content = wire.fragment;
        if (receiving != nullptr) {
            const ByteString plaintext = receiving->Process(wire.fragment);
            const size_t paddingBytes = BlockMode() ? static_cast<unsigned char>(plaintext.back()) + 1U : 0;
            const size_t contentBytes = plaintext.size() - MacBytes() - paddingBytes;
            record.content = plaintext.substr(0, contentBytes);
            record.padding = plaintext.substr(plaintext.size() - paddingBytes);
            record.macRight =
                receiving->NextMac(record.type, record.content) == plaintext.substr(contentBytes, MacBytes());
        }
        records.push_back(record);
        if (wire.type == RecordType::kChangeCipherSpec) receiving = std::move(nextReceiving);
    }
    return records;
}

ByteString TlsPeer::Record(uint8_t type, const ByteString& content) {
    if (sending == nullptr) return MakeRecord(type, content, headerVersion);
    ByteString plaintext = content + NextMac(type, content);
    if (BlockMode()) {
        const size_t padding = 15 - plaintext.size() % 16;
        plaintext += ByteString(padding + 1, static_cast<char>(padding));
    }
    return RecordAround(type, plaintext);
}

ByteString TlsPeer::RecordAround(uint8_t type, const ByteString& plaintext) {
    return MakeRecord(type, sending->Process(plaintext), headerVersion);
}

ByteString TlsPeer::HandshakeRecord(uint8_t type, const ByteString& body) {
    const ByteString message = WireWriter().U8(type).Bytes24(body).Written();
    transcript += message;
    return Record(22, message);
}

// The handshake messages among the records; the transcript takes them.
ByteString TlsPeer::ReadHandshake(const ByteString& bytes) {
    ByteString messages;
    for (const PeerRecord& record : Read(bytes)) {
        if (record.type == 22 && record.macRight) messages += record.content;
    }
    transcript += messages;
    return messages;
}

void TlsPeer::DeriveKeys(const ByteString& preMaster, bool isClient) {
    const size_t ivBytes = BlockMode() ? 16 : 0;
    const size_t length = 2 * (MacBytes() + KeyBytes(suite) + ivBytes);
    ByteString block;
    if (version >= kPeerTls10) {
        masterSecret = PeerTlsPrf(preMaster, "master secret", clientRandom + serverRandom, 48);
        block = PeerTlsPrf(masterSecret, "key expansion", serverRandom + clientRandom, length);
    } else {
        masterSecret = Ssl3Expansion(preMaster, clientRandom + serverRandom, 48);
        block = Ssl3Expansion(masterSecret, serverRandom + clientRandom, length);
    }
    WireReader reader(block);
    const ByteString macSecrets[] = {reader.Bytes(MacBytes()), reader.Bytes(MacBytes())};
    const ByteString keys[] = {reader.Bytes(KeyBytes(suite)), reader.Bytes(KeyBytes(suite))};
    const ByteString ivs[] = {reader.Bytes(ivBytes), reader.Bytes(ivBytes)};
    const size_t own = isClient ? 0 : 1;
    const size_t other = 1 - own;
    nextSending = std::make_unique<PeerProtection>(version, MacHash(suite), macSecrets[own],
                                                   PeerCipher(PeerCipher::Way::kEncrypt, keys[own], ivs[own]));
    nextReceiving = std::make_unique<PeerProtection>(version, MacHash(suite), macSecrets[other],
                                                     PeerCipher(PeerCipher::Way::kDecrypt, keys[other], ivs[other]));
}

// RFC 2246, 7.4.9; RFC 6101, 5.6.9.
ByteString TlsPeer::VerifyData(bool ofClient) const {
    if (version >= kPeerTls10) {
        return PeerTlsPrf(masterSecret, ofClient ? "client finished" : "server finished",
                          PeerDigest("MD5", transcript) + PeerDigest("SHA1", transcript), 12);
    }
    ByteString proof;
    for (const char* hash : {"MD5", "SHA1"}) {
        const ByteString inner = PeerDigest(
            hash, transcript + (ofClient ? "CLNT" : "SRVR") + masterSecret + ByteString(PadBytes(hash), '\x36'));
        proof += PeerDigest(hash, masterSecret + ByteString(PadBytes(hash), '\x5C') + inner);
    }
    return proof;
}

}  // namespace velmora
