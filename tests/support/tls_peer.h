#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "config/byte_string.h"
#include "tests/support/peer_crypto.h"
#include "tests/support/tls_identity.h"
#include "tls/tls_connection.h"

namespace velmora {

// A record that a TlsPeer has read: its plaintext, with content, MAC and padding apart.
struct PeerRecord {
    uint8_t type = 0;
    uint16_t version = 0;
    ByteString content;
    bool macRight = true;  // also of a record without protection
    ByteString padding;    // with the byte that counts it; empty for a stream cipher
};

// What protects the records of one direction in a TlsPeer, taken apart.
class PeerProtection {
public:
    PeerProtection(uint16_t protocolVersion, const char* macHash, ByteString secret, const PeerCipher& streamCipher)
        : version(protocolVersion), hash(macHash), macSecret(std::move(secret)), cipher(streamCipher) {}

    // The MAC of the next record: RFC 2246, 6.2.3.1, or RFC 6101, 5.2.3.1. Each call counts one record.
    ByteString NextMac(uint8_t type, const ByteString& content);

    ByteString Process(const ByteString& data) { return cipher.Process(data); }

private:
    uint16_t version;
    const char* hash;
    ByteString macSecret;
    PeerCipher cipher;
    uint64_t sequence = 0;
};

// The other end of a TlsConnection, played by libcrypto: it derives all keys and reads and writes all records itself.
// It speaks one version and one suite.
class TlsPeer {
public:
    // version: 0x0300 or 0x0301; suite: the number of one of the four; identity: of the server, whichever end that is.
    TlsPeer(uint16_t protocolVersion, uint16_t suiteNumber, const TlsIdentity& serverIdentity);

    // Carries a whole handshake through, as the client of server or as the server of client. False when anything on the
    // way is not as it must be.
    bool HandshakeWithServer(TlsConnection& server);
    bool HandshakeWithClient(TlsConnection& client);

    // The records that the connection has sent.
    std::vector<PeerRecord> Read(const ByteString& bytes);

    // A record for the connection, with its MAC and as much padding as is needed.
    ByteString Record(uint8_t type, const ByteString& content);

    // A record around any plaintext, which is for a block cipher whole blocks.
    ByteString RecordAround(uint8_t type, const ByteString& plaintext);

    // The MAC of the next record that is sent.
    ByteString NextMac(uint8_t type, const ByteString& content) { return sending->NextMac(type, content); }

    size_t MacBytes() const;
    bool BlockMode() const;

    // The version that the headers of records name. It starts as the protocol's.
    uint16_t headerVersion;

private:
    ByteString HandshakeRecord(uint8_t type, const ByteString& body);
    ByteString ReadHandshake(const ByteString& bytes);
    void DeriveKeys(const ByteString& preMaster, bool isClient);
    ByteString VerifyData(bool ofClient) const;

    uint16_t version;
    uint16_t suite;
    TlsIdentity identity;
    ByteString transcript;
    ByteString clientRandom;
    ByteString serverRandom;
    ByteString masterSecret;
    std::unique_ptr<PeerProtection> nextSending;    // ready, but not yet in use
    std::unique_ptr<PeerProtection> nextReceiving;  // in use from the ChangeCipherSpec on
    std::unique_ptr<PeerProtection> sending;
    std::unique_ptr<PeerProtection> receiving;
};

}  // namespace velmora
