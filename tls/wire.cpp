#include "tls/wire.h"

#include <algorithm>

#include "config/big_endian.h"

namespace velmora {

ByteString WireReader::Bytes(size_t count) {
    const size_t taken = std::min(count, left.size());
    ByteString bytes(left.substr(0, taken));
    left.remove_prefix(taken);
    return bytes;
}

uint64_t WireReader::Number(size_t count) {
    const uint64_t number = left.size() < count ? 0 : ReadBigEndian(left.substr(0, count));
    left.remove_prefix(std::min(count, left.size()));
    return number;
}

WireWriter& WireWriter::Bytes(std::string_view value) {
    bytes += value;
    return *this;
}

WireWriter& WireWriter::Number(uint64_t value, size_t count) {
    AppendBigEndian(bytes, value, count);
    return *this;
}

WireWriter& WireWriter::BytesBehindLength(std::string_view value, size_t lengthBytes) {
    return Number(value.size(), lengthBytes).Bytes(value);
}

}  // namespace velmora
