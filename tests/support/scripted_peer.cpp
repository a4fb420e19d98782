#include "tests/support/scripted_peer.h"

#include <gtest/gtest.h>

#include "crypto/hmac.h"
#include "crypto/md5.h"
#include "crypto/prf.h"
#include "crypto/rsa.h"
#include "crypto/sha1.h"

namespace velmora {
namespace {

constexpr unsigned kRc4Sha = 0x0005;

}  // namespace

ByteString PlainDirection::Mac(unsigned type, const ByteString& content) {
    return hmacSha1(macSecret,
                    BigEndian(sequence++, 8) + BigEndian(type, 1) + BigEndian(0x0301, 2) + Counted(2, content));
}

ByteString PlainDirection::Protect(unsigned type, const ByteString& content) {
    return rc4Process(cipher, content + Mac(type, content));
}

ByteString PlainDirection::Unprotect(unsigned type, const ByteString& fragment) {
    const ByteString plaintext = rc4Process(cipher, fragment);
    EXPECT_GE(plaintext.size(), 20U);
    const ByteString content = plaintext.substr(0, plaintext.size() - 20);
    EXPECT_EQ(plaintext.substr(content.size()), Mac(type, content)) << "wrong MAC";
    return content;
}

std::vector<SeenRecord> ScriptedPeer::Receive(std::string_view stream) {
    std::vector<SeenRecord> records = RecordsIn(stream);
    PlainDirection& direction = client ? serverWrites : clientWrites;
    for (SeenRecord& record : records) {
        if (readProtected) record.fragment = direction.Unprotect(record.type, record.fragment);
        if (record.type == 22) {
            for (const SeenMessage& message : MessagesIn(record.fragment)) TakeMessage(message);
        }
        if (record.type != 20) continue;
        DeriveKeys();
        readProtected = suite == kRc4Sha;
    }
    return records;
}

void ScriptedPeer::TakeMessage(const SeenMessage& message) {
    if (message.type != 0) transcript += MessageOf(message.type, message.body);
    const size_t sessionIdBytes = message.type == 2 ? static_cast<unsigned char>(message.body[34]) : 0;
    if (message.type == 1) clientRandom = message.body.substr(2, 32);
    if (message.type != 2) return;
    serverRandom = message.body.substr(2, 32);
    sessionId = message.body.substr(35, sessionIdBytes);
    suite = static_cast<unsigned char>(message.body[35 + sessionIdBytes]) * 256U +
            static_cast<unsigned char>(message.body[36 + sessionIdBytes]);
}

ByteString ScriptedPeer::Send(unsigned type, std::string_view body) {
    const ByteString message = MessageOf(type, body);
    if (type != 0) transcript += message;
    return SendRecord(22, message);
}

ByteString ScriptedPeer::SendRecord(unsigned type, std::string_view content) {
    PlainDirection& direction = client ? clientWrites : serverWrites;
    return RecordOf(type, writeProtected ? direction.Protect(type, ByteString(content)) : ByteString(content));
}

ByteString ScriptedPeer::SendClientHello(const ClientHelloFields& fields) {
    clientRandom = fields.random;
    return Send(1, fields.Body());
}

ByteString ScriptedPeer::SendServerHello(const ServerHelloFields& fields) {
    serverRandom = fields.random;
    suite = fields.suite;
    return Send(2, fields.Body());
}

ByteString ScriptedPeer::SendClientKeyExchange(const ByteString& modulus, const ByteString& exponent) {
    const ByteString preMaster = Octets({3, 1}) + ByteString(46, 'p');
    const ByteString block = Octets({0, 2}) + ByteString(modulus.size() - 51, 'x') + Octets({0}) + preMaster;
    SetPreMaster(preMaster);
    RsaKey key;
    setPublicKey(key, exponent, modulus);
    return Send(16, Counted(2, rsaPublic(key, block)));
}

void ScriptedPeer::SetPreMaster(const ByteString& preMaster) {
    master = tlsPrf(preMaster, "master secret", clientRandom + serverRandom, 48);
}

ByteString ScriptedPeer::SendChangeCipherSpec() {
    const ByteString record = SendRecord(20, Octets({1}));
    DeriveKeys();
    writeProtected = suite == kRc4Sha;
    return record;
}

void ScriptedPeer::DeriveKeys() {
    if (keysDerived) return;
    keysDerived = true;
    const ByteString keyBlock = tlsPrf(master, "key expansion", serverRandom + clientRandom, 72);
    clientWrites.macSecret = keyBlock.substr(0, 20);
    serverWrites.macSecret = keyBlock.substr(20, 20);
    rc4SetKey(clientWrites.cipher, keyBlock.substr(40, 16));
    rc4SetKey(serverWrites.cipher, keyBlock.substr(56, 16));
}

ByteString ScriptedPeer::VerifyData(bool ofClient) const {
    return tlsPrf(master, ofClient ? "client finished" : "server finished",
                  md5Digest(transcript) + sha1Digest(transcript), 12);
}

}  // namespace velmora
