#pragma once

#include "config/byte_string.h"

namespace velmora {

// Bytes as lower-case hexadecimal digits, two a byte; and back, spaces left out of account.
ByteString toHex(const ByteString& bytes);
ByteString fromHex(const ByteString& digits);

}  // namespace velmora
