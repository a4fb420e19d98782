#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "config/byte_string.h"
#include "crypto/aes.h"
#include "crypto/rc4.h"
#include "tls/cipher_suite.h"
#include "tls/protocol.h"
#include "tls/record_mac.h"

namespace velmora {

// The keys of one direction, cut from the key block.
struct DirectionKeys {
    ByteString macSecret;
    ByteString key;
    ByteString iv;
};

// MAC, padding and cipher of the records of one direction (RFC 2246, 6.2.3). One object serves one direction; cipher
// and sequence number go on from record to record.
class RecordProtection {
public:
    // No protection: what goes in comes out.
    RecordProtection() = default;

    // Protection for sending, and for receiving; from record 0 on.
    static RecordProtection ForSending(const CipherSuite& suite, const DirectionKeys& keys);
    static RecordProtection ForReceiving(const CipherSuite& suite, const DirectionKeys& keys);

    // The protected fragment of the next record: content, MAC and the shortest possible padding, encrypted.
    ByteString Protect(RecordType type, uint16_t version, std::string_view content);

    // The content of the next record; none when its MAC is wrong, or when it is too short to have one.
    std::optional<ByteString> Unprotect(RecordType type, uint16_t version, const ByteString& fragment);

private:
    RecordProtection(const CipherSuite& cipherSuite, const DirectionKeys& keys);

    // For a block cipher: fragment holds the content, room for its MAC, and the padding. Fills in the MAC and encrypts
    // it all where it lies.
    void AuthenticateAndEncrypt(const MacInput& input, ByteString& fragment);
    ByteString Decrypt(const ByteString& ciphertext);

    CipherSuite suite;
    RecordMac mac;
    uint64_t sequence = 0;  // of the next record
    Rc4State rc4;
    AesCipher aes;
};

}  // namespace velmora
