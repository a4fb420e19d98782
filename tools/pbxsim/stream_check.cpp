#include "tools/pbxsim/stream_check.h"

#include "config/text_numbers.h"
#include "csta/framing.h"

namespace velmora::pbxsim {
namespace {

constexpr size_t kLengthEnd = 4;  // a frame's length is in its bytes 2 and 3
constexpr char kTlsHandshake[] =
    "\x16\x03";  // how a TLS client starts: a handshake record, version 3 (RFC 2246, 6.2.1)

size_t FrameLength(const ByteString& header) {
    return static_cast<size_t>(static_cast<unsigned char>(header[2])) << 8 | static_cast<unsigned char>(header[3]);
}

}  // namespace

ByteString StreamCheck::Follow(const ByteString& bytes) {
    for (const char byte : bytes) {
        if (bytesLeft > 0) {
            --bytesLeft;
            continue;
        }
        header += byte;
        if (firstFrame && header == kTlsHandshake) {
            return "it speaks TLS, but this PBX speaks plain CSTA: set the provider's encrypt to 0, or start this "
                   "PBX with --tls";
        }
        if (header.size() < kLengthEnd) continue;

        const size_t length = FrameLength(header);
        if (length < kFrameHeaderBytes) {
            return "it sent a frame of " + DecimalText(static_cast<int64_t>(length)) +
                   " bytes, but the header alone has " + DecimalText(kFrameHeaderBytes);
        }
        bytesLeft = length - kLengthEnd;
        header.clear();
        firstFrame = false;
    }
    return {};
}

}  // namespace velmora::pbxsim
