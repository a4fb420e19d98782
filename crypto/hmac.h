#pragma once

#include "config/byte_string.h"

namespace velmora {

// Keyed digests (RFC 2104) over MD5 and SHA-1: the record MAC of TLS 1.0 and the core of its PRF.
//
// A key has at most 64 bytes, one block of either hash; a longer one throws std::invalid_argument. RFC 2104 would
// hash it first, but every key here has 48 bytes or fewer, so a longer one is a mistake and must not pass silently.

// HMAC-MD5 of data under key: 16 bytes. Both may be empty and may hold zero bytes.
ByteString hmacMd5(const ByteString& key, const ByteString& data);

// HMAC-SHA1, likewise: 20 bytes.
ByteString hmacSha1(const ByteString& key, const ByteString& data);

}  // namespace velmora
