#pragma once

#include "config/byte_string.h"

namespace velmora {

// Bytes as other libraries take them.

inline const unsigned char* UnsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

inline unsigned char* UnsignedBytes(ByteString& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

}  // namespace velmora
