#include "tls/tls_connection.h"
#include "tls/wire.h"

// From the handshake's secrets to protected records (RFC 2246, sections 6.3, 7.1 and 8.1).

namespace velmora {

void TlsConnection::SendChangeCipherSpec() {
    constexpr std::string_view kBody = "\x01";
    LogHandshake("SendChangeCipherSpec", kBody);
    WriteRecord(RecordType::kChangeCipherSpec, kBody);
    writeProtected = true;
}

// Whoever has not changed yet does so now: a server, and a client that resumes a session.
void TlsConnection::ProcessChangeCipherSpec(std::string_view body) {
    LogHandshake("ProcessChangeCipherSpec", body);
    readProtected = true;
    if (writeProtected) return;
    SendChangeCipherSpec();
    PerformChangeCipherSpec();
}

// A suite that we do not know has no keys: records go on in the clear.
void TlsConnection::PerformChangeCipherSpec() {
    cipherKind = suite.cipherKind;
    LogHandshake("PerformChangeCipherSpec", WireWriter().U16(suite.number).Written());
    const ByteString keyBlock = KeyBlock(protocolVersion, masterSecret, clientRandom, serverRandom,
                                         2 * (suite.macBytes + suite.keyBytes + suite.ivBytes));
    LogHandshake("Key Block", keyBlock);

    DirectionKeys client;
    DirectionKeys server;
    WireReader reader(keyBlock);
    client.macSecret = reader.Bytes(suite.macBytes);
    server.macSecret = reader.Bytes(suite.macBytes);
    client.key = reader.Bytes(suite.keyBytes);
    server.key = reader.Bytes(suite.keyBytes);
    client.iv = reader.Bytes(suite.ivBytes);
    server.iv = reader.Bytes(suite.ivBytes);
    LogHandshake("Client Write MAC Secret", client.macSecret);
    LogHandshake("Server Write MAC Secret", server.macSecret);
    LogHandshake("Client Write Key", client.key);
    LogHandshake("Server Write Key", server.key);

    const bool isClient = self == Endpoint::kClient;
    writeProtection = RecordProtection::ForSending(suite, isClient ? client : server);
    readProtection = RecordProtection::ForReceiving(suite, isClient ? server : client);
}

void TlsConnection::TakePreMasterSecret(const ByteString& preMaster) {
    LogHandshake("Client Random", clientRandom);
    LogHandshake("Server Random", serverRandom);
    masterSecret = MasterSecret(protocolVersion, preMaster, clientRandom, serverRandom);
    LogHandshake("Master Secret", masterSecret);
}

}  // namespace velmora
