#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// The presentation language of TLS (RFC 2246, section 4): big-endian numbers, and fields behind their own length.

// Reads the body of a message, field by field. It never reads past the end: a number that is not wholly there is 0, and
// of a byte string comes what is there.
class WireReader {
public:
    // The bytes must outlive the reader and what Rest gives.
    explicit WireReader(std::string_view bytes) : left(bytes) {}

    uint8_t U8() { return static_cast<uint8_t>(Number(1)); }
    uint16_t U16() { return static_cast<uint16_t>(Number(2)); }
    uint32_t U24() { return static_cast<uint32_t>(Number(3)); }

    ByteString Bytes(size_t count);

    // What has not been read yet.
    std::string_view Rest() const { return left; }

private:
    uint64_t Number(size_t count);

    std::string_view left;
};

// Writes the body of a message, field by field.
class WireWriter {
public:
    WireWriter& U8(uint64_t value) { return Number(value, 1); }
    WireWriter& U16(uint64_t value) { return Number(value, 2); }
    WireWriter& U24(uint64_t value) { return Number(value, 3); }

    WireWriter& Bytes(std::string_view value);

    // A byte string behind its length of one, two or three bytes. It must not be longer than they can say.
    WireWriter& Bytes8(std::string_view value) { return BytesBehindLength(value, 1); }
    WireWriter& Bytes16(std::string_view value) { return BytesBehindLength(value, 2); }
    WireWriter& Bytes24(std::string_view value) { return BytesBehindLength(value, 3); }

    // What has been written.
    const ByteString& Written() const { return bytes; }

private:
    WireWriter& Number(uint64_t value, size_t count);
    WireWriter& BytesBehindLength(std::string_view value, size_t lengthBytes);

    ByteString bytes;
};

}  // namespace velmora
