#include "csta/framing.h"

#include "config/big_endian.h"
#include "config/trace_log.h"

namespace velmora {
namespace {

constexpr size_t kLengthPosition = 2;
constexpr size_t kInvokeIdPosition = 4;

uint32_t ReadNumber(const ByteString& bytes, size_t position, size_t count) {
    return static_cast<uint32_t>(ReadBigEndian(std::string_view(bytes).substr(position, count)));
}

}  // namespace

ByteString EncodeFrame(uint32_t invokeId, const ByteString& xml) {
    const size_t length = kFrameHeaderBytes + xml.size();
    if (length > kFrameMaxBytes) return {};
    ByteString frame;
    frame.reserve(length);
    frame.append(2, '\0');
    AppendBigEndian(frame, length, 2);
    AppendBigEndian(frame, invokeId, 4);
    frame += xml;
    return frame;
}

void FrameCutter::Append(const ByteString& bytes) {
    // Room is made once a chunk, not once a frame: a burst of small frames costs no more a byte than a large one.
    buffer.erase(0, position);
    position = 0;
    buffer += bytes;
}

std::optional<Frame> FrameCutter::Next() {
    const size_t held = buffer.size() - position;
    if (held < kFrameHeaderBytes) return {};
    const size_t length = ReadNumber(buffer, position + kLengthPosition, 2);
    if (length < kFrameHeaderBytes) {
        WriteLog(1, "Received a frame shorter than its header: dropped what was received");
        Clear();
        return {};
    }
    if (held < length) return {};

    const Frame frame = {
        ReadNumber(buffer, position + kInvokeIdPosition, 4),
        std::string_view(buffer).substr(position + kFrameHeaderBytes, length - kFrameHeaderBytes),
    };
    position += length;
    return frame;
}

void FrameCutter::Clear() {
    buffer.clear();
    position = 0;
}

}  // namespace velmora
