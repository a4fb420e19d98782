#pragma once

#include <openssl/bn.h>

#include <memory>

#include "benchmarks/unsigned_bytes.h"

namespace velmora {

// A number of libcrypto's that frees itself.
using OpenSslNumber = std::shared_ptr<BIGNUM>;

inline OpenSslNumber OpenSslNumberOf(const ByteString& bytes) {
    return {BN_bin2bn(UnsignedBytes(bytes), static_cast<int>(bytes.size()), nullptr), BN_free};
}

}  // namespace velmora
