#include "tools/pbxsim/channel.h"

#include <utility>

namespace velmora::pbxsim {
namespace {

void AppendChunk(ChannelOutput& output, ByteString bytes) {
    if (!bytes.empty()) output.chunks.push_back(std::move(bytes));
}

}  // namespace

Channel::Channel(Pbx& pbx, Encryption encryption) : client(pbx) {
    if (encryption == Encryption::kTls) tls.emplace(TlsLink::Answer::kHandshake);
    if (encryption == Encryption::kTlsRefused) tls.emplace(TlsLink::Answer::kRefusal);
}

void Channel::Receive(const ByteString& bytes, uint64_t nowMs) {
    if (hungUp) return;
    client.Receive(tls ? tls->Receive(bytes) : bytes, nowMs);
}

ChannelOutput Channel::TakeOutput(uint64_t nowMs) {
    ChannelOutput output;
    if (hungUp) return output;
    Output messages = client.TakeOutput(nowMs);
    if (tls) {
        output.lines = tls->TakeLines();
        AppendChunk(output, tls->Send({}));
    }
    for (ByteString& line : messages.lines) output.lines.push_back(std::move(line));
    for (ByteString& frame : messages.frames) AppendChunk(output, tls ? tls->Send(frame) : std::move(frame));
    output.hangUp = messages.hangUp;
    if (tls && !tls->EndReason().empty() && !messages.hangUp) {
        output.lines.push_back("-- hanging up: " + tls->EndReason());
        output.hangUp = true;
    }
    hungUp = output.hangUp;
    return output;
}

std::optional<uint64_t> Channel::NextDueMs() const {
    if (hungUp) return {};
    return client.NextDueMs();
}

}  // namespace velmora::pbxsim
