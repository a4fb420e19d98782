#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

#include "config/byte_string.h"
#include "crypto/hmac_key.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"
#include "tls/cipher_suite.h"
#include "tls/protocol.h"

namespace velmora {

// What stands in front of the content in TLS: sequence number, type, version, length. SSL 3.0 has no version.
inline constexpr size_t kMacHeaderBytes = 13;

// What a record's MAC is taken over.
struct MacInput {
    uint64_t sequence;  // number of the record in its direction
    RecordType type;
    uint16_t version;  // the connection's; below kTls10 the form of SSL 3.0 is taken
    std::string_view content;
};

// The MAC of one direction's records (RFC 2246, 6.2.3.1; RFC 6101, 5.2.3.1).
class RecordMac {
public:
    // No MAC: 0 bytes.
    RecordMac() = default;

    // The secret has 16 bytes for MD5 and 20 for SHA-1.
    RecordMac(MacKind kind, ByteString macSecret);

    // A MAC in the making.
    using State = std::variant<std::monostate, Md5State, Sha1State>;

    // The MAC in steps: Start, an Update for each piece of the content, and Finish, which writes the MAC to target.
    State Start(const MacInput& input) const;
    static void Update(State& state, std::string_view piece);
    void Finish(State& state, uint16_t version, char* target) const;

    // Writes the MAC to target: 16 bytes for MD5, 20 for SHA-1. target may be the end of the content.
    void Write(const MacInput& input, char* target) const;

private:
    ByteString secret;
    std::variant<std::monostate, HmacKey<Md5State>, HmacKey<Sha1State>> key;  // for TLS; SSL 3.0 takes its hash alone
};

}  // namespace velmora
