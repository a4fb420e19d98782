#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "config/byte_string.h"
#include "crypto/rc4.h"
#include "tests/support/handshake_messages.h"

namespace velmora {

// One direction of records protected by RC4 with SHA-1 in TLS 1.0 (RFC 2246, 6.2.3.1), in either role.
struct PlainDirection {
    ByteString macSecret;
    Rc4State cipher;
    uint64_t sequence = 0;

    ByteString Protect(unsigned type, const ByteString& content);

    // The content; a wrong MAC fails the test.
    ByteString Unprotect(unsigned type, const ByteString& fragment);

private:
    ByteString Mac(unsigned type, const ByteString& content);
};

// The other end of a TlsConnection, which sends what a test tells it to, whatever it has received. It knows TLS 1.0,
// the suite 0x0005 and, with a suite that nobody knows, records that stay in the clear. Its rules are those of
// RFC 2246, 5, 6.3, 7.4.9 and 8.1, written down once more; only the digests and RC4 are those of crypto/.
class ScriptedPeer {
public:
    explicit ScriptedPeer(bool isClient) : client(isClient) {}

    // Takes what the other end has sent. Its messages become part of the transcript; randoms, suite and session ID are
    // taken out of hellos. The records, without protection.
    std::vector<SeenRecord> Receive(std::string_view stream);

    // A record with the message, which becomes part of the transcript unless it is a HelloRequest.
    ByteString Send(unsigned type, std::string_view body);

    // A record of any type, protected once ChangeCipherSpec has been sent.
    ByteString SendRecord(unsigned type, std::string_view content);

    // The client's hello and the server's, with the random and suite taken from the fields.
    ByteString SendClientHello(const ClientHelloFields& fields = {});
    ByteString SendServerHello(const ServerHelloFields& fields = {});

    // The client's key exchange: the pre-master secret for the holder of this key, in a block of type 2.
    ByteString SendClientKeyExchange(const ByteString& modulus, const ByteString& exponent);

    // Takes the pre-master secret: the server has decrypted it.
    void SetPreMaster(const ByteString& preMaster);
    void SetMaster(const ByteString& secret) { master = secret; }

    // Changes to the keys that the secrets give. They are derived when the first of both ends changes.
    ByteString SendChangeCipherSpec();

    // What our Finished, or the peer's, has to say at this point of the handshake.
    ByteString VerifyData(bool ofClient) const;
    ByteString SendFinished() { return Send(20, VerifyData(client)); }

    bool client;
    ByteString transcript;
    ByteString clientRandom = ByteString(32, 'c');
    ByteString serverRandom = ByteString(32, 's');
    ByteString sessionId;
    ByteString master;
    unsigned suite = 0;

private:
    void DeriveKeys();
    void TakeMessage(const SeenMessage& message);

    bool keysDerived = false;
    bool readProtected = false;
    bool writeProtected = false;
    PlainDirection clientWrites;
    PlainDirection serverWrites;
};

}  // namespace velmora
