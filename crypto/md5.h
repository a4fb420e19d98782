#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// MD5 (RFC 1321). It protects nothing by itself any more; TLS 1.0 uses it in its handshake and its PRF.

inline constexpr size_t kMd5Bytes = 16;

// The digest of data: 16 bytes.
ByteString md5Digest(const ByteString& data);

// A digest over a message that comes in pieces. A copy goes on by itself.
struct Md5State {
    static constexpr size_t kDigestBytes = kMd5Bytes;

    // Takes the next bytes of the message.
    void update(std::string_view bytes);

    // The digest of all bytes so far: 16 bytes. More may follow.
    ByteString digest() const;

    // Ends the message and writes the 16 bytes of its digest. The state is used up.
    void finish(uint8_t* target);

    uint32_t chain[4] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    uint32_t bitCount[2] = {};  // of the message so far: low word, high word
    uint8_t buffer[64] = {};    // the bytes that do not fill a block yet
};

}  // namespace velmora
