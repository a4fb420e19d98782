#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// The expansion function and the pseudo-random function of TLS 1.0 (RFC 2246, section 5).
//
// A length of zero or less gives an empty string. A secret that makes an HMAC key of more than 64 bytes throws
// std::invalid_argument (see hmac.h): more than 64 bytes for pHash, more than 128 for tlsPrf.

// P_MD5: the whole blocks of 16 bytes that cover length. They are not cut to length.
ByteString pHashMd5(const ByteString& secret, const ByteString& seed, int32_t length);

// P_SHA1, likewise in blocks of 20 bytes.
ByteString pHashSha1(const ByteString& secret, const ByteString& seed, int32_t length);

// The PRF: exactly length bytes. The halves of a secret of odd length share its middle byte.
ByteString tlsPrf(const ByteString& secret, const ByteString& label, const ByteString& seed, int32_t length);

}  // namespace velmora
