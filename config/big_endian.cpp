#include "config/big_endian.h"

namespace velmora {

void AppendBigEndian(ByteString& bytes, uint64_t value, size_t count) {
    while (count > 0) bytes += static_cast<char>((value >> (8 * --count)) & 0xFF);
}

uint64_t ReadBigEndian(std::string_view bytes) {
    uint64_t value = 0;
    for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

}  // namespace velmora
