#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// Unsigned numbers in network byte order, the most significant byte first, as frames and TLS records carry them.

// Appends the lowest count bytes of value; count is 1 to 8.
void AppendBigEndian(ByteString& bytes, uint64_t value, size_t count);

// The number that the bytes stand for; 0 for none. Of more than 8 bytes, the last 8 count.
uint64_t ReadBigEndian(std::string_view bytes);

}  // namespace velmora
