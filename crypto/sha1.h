#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// SHA-1 (FIPS 180): the record MAC of the AES suites, half of TLS 1.0's handshake digest, the signatures of old
// certificates. The processor's SHA extensions are used where it has them.

inline constexpr size_t kSha1Bytes = 20;

// The digest of data: 20 bytes.
ByteString sha1Digest(const ByteString& data);

// A digest over a message that comes in pieces. A copy goes on by itself.
struct Sha1State {
    static constexpr size_t kDigestBytes = kSha1Bytes;

    // Takes the next bytes of the message.
    void update(std::string_view bytes);

    // The digest of all bytes so far: 20 bytes. More may follow.
    ByteString digest() const;

    // Ends the message and writes the 20 bytes of its digest. The state is used up.
    void finish(uint8_t* target);

    uint32_t bitCount[2] = {};  // of the message so far: low word, high word
    uint32_t chain[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    uint8_t buffer[64] = {};  // the bytes that do not fill a block yet
};

}  // namespace velmora
