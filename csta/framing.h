#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// CSTA messages on the wire, one frame each (the header that ECMA-323 has for TCP without SOAP):
//
//   bytes 0-1   zero; ignored on receipt
//   bytes 2-3   length of the whole frame, these 8 bytes included, big-endian
//   bytes 4-7   invoke ID, big-endian
//   bytes 8-    the message in XML, no terminator

inline constexpr size_t kFrameHeaderBytes = 8;
inline constexpr size_t kFrameMaxBytes = 65535;  // what the 16-bit length can say

struct Frame {
    uint32_t invokeId = 0;
    std::string_view xml;  // where the cutter holds it, until the next call of Append or Clear

    bool operator==(const Frame&) const = default;
};

// The frame's bytes; empty when the message is too long for the 16-bit length.
ByteString EncodeFrame(uint32_t invokeId, const ByteString& xml);

// Cuts frames out of a stream of bytes, however it was split on the way. Holds less than one frame between calls.
class FrameCutter {
public:
    // Takes the next bytes of the stream.
    void Append(const ByteString& bytes);

    // The next whole frame; none when more bytes are needed. A frame whose length does not even cover its header leaves
    // no way to find the next one: everything held is dropped, and the trace log says so at level 1.
    std::optional<Frame> Next();

    // Drops everything held, for a new stream.
    void Clear();

private:
    ByteString buffer;    // bytes of the stream; those before position are done with
    size_t position = 0;  // where the next frame starts in buffer
};

}  // namespace velmora
