#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "config/byte_string.h"
#include "tls/cipher_suite.h"
#include "tls/key_derivation.h"
#include "tls/record_protection.h"
#include "tls/tls_connection.h"
#include "tls/transcript.h"

namespace velmora {

// How messages are put into records: of those that have waited, and the new one behind them, the first leavingBytes
// leave now, in records of about the same length, and the rest waits for the next message. As it stands, a message a
// record.
struct MessagePacking {
    size_t leavingBytes = ByteString::npos;
    size_t records = 1;
};

// The other end of a TlsConnection that speaks any version and suite, knows the secrets, and sends whatever it is told
// to, with the right keys and MACs: what it sends is never refused for those. It drives the endpoint and judges
// nothing. A copy goes on by itself.
//
// All randoms must come from tests/support/fixed_random with a sequence of the one byte 0x5A: so the peer knows the
// pre-master secret that a client draws.
class KeyedPeer {
public:
    KeyedPeer(Endpoint endpoint, uint16_t protocolVersion, const CipherSuite& cipherSuite);

    // Begins a new connection, in the clear. A client then offers the session ID that the server gave it.
    void StartOver();

    bool IsClient() const { return self == Endpoint::kClient; }

    // Takes what the endpoint has sent, whole records, up to the first one that has other keys.
    void Read(const ByteString& stream);

    // A record, protected once ChangeCipherSpec has been sent.
    ByteString Record(RecordType type, std::string_view content);

    // For the messages from now on.
    void SetPacking(const MessagePacking& forMessages) { packing = forMessages; }

    // The records that leave with a message, which becomes part of the transcript.
    ByteString Message(HandshakeType type, std::string_view body);

    // The messages of a usual handshake.
    ByteString ClientHello();
    ByteString ServerHello();
    ByteString ClientKeyExchange(const ByteString& exponent, const ByteString& modulus);
    ByteString ChangeCipherSpec();
    ByteString Finished();

private:
    struct Keys {
        ByteString randoms;  // that they were made of, the client's and the server's
        DirectionKeys client;
        DirectionKeys server;
    };

    void TakeMessages(std::string_view messages);
    ByteString TakeLeavingRecords();
    const Keys& DeriveKeys();

    Endpoint self;
    uint16_t version;
    CipherSuite suite;
    ByteString clientRandom;
    ByteString serverRandom;
    ByteString sessionId = "session";
    Transcript transcript;
    MessagePacking packing;
    ByteString waiting;  // messages, or the rest of one, that have not left
    ByteString masterSecret;
    std::optional<Keys> keys;    // none before the first change of cipher spec
    RecordProtection sending;    // none before ChangeCipherSpec
    RecordProtection receiving;  // none before the endpoint's
};

}  // namespace velmora
