#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// Digests and ciphers as libcrypto computes them. hash is "MD5" or "SHA1".
ByteString JudgesDigest(const char* hash, const ByteString& data);
ByteString JudgesHmac(const char* hash, const ByteString& key, const ByteString& data);

// AES in CBC mode over whole blocks, or CFB over anything; the key has 16, 24 or 32 bytes, the IV 16.
ByteString JudgesAes(bool encrypt, bool cfb, const ByteString& key, const ByteString& iv, const ByteString& data);

// The start of an RC4 stream over data; the key is not empty.
ByteString JudgesRc4(const ByteString& key, const ByteString& data);

}  // namespace velmora
