#include "tools/pbxsim/client.h"

#include <utility>

#include "config/text_numbers.h"
#include "tools/pbxsim/summary.h"
#include "xml/xml_node.h"

namespace velmora::pbxsim {
namespace {

// "-> MakeCallResponse  #3  call 1, device 40@example.com (remark)"
ByteString MessageLine(const ByteString& direction, uint32_t invokeId, const XmlNode& message,
                       const ByteString& remark) {
    ByteString line = direction + " " + MessageName(message) + "  #" + DecimalText(invokeId);
    const ByteString summary = Summary(message);
    if (!summary.empty()) line += "  " + summary;
    if (!remark.empty()) line += " (" + remark + ")";
    return line;
}

}  // namespace

void Client::Receive(const ByteString& bytes, uint64_t nowMs) {
    if (hungUp) return;
    const ByteString fault = check.Follow(bytes);
    cutter.Append(bytes);
    while (const std::optional<Frame> frame = cutter.Next()) TakeRequest(*frame, nowMs);
    if (!fault.empty()) HangUp(fault);
}

Output Client::TakeOutput(uint64_t nowMs) {
    SendDue(nowMs);
    return std::exchange(output, {});
}

std::optional<uint64_t> Client::NextDueMs() const {
    if (hungUp) return {};
    return session.NextDueMs();
}

void Client::TakeRequest(const Frame& frame, uint64_t nowMs) {
    // What is due before this request leaves before it, and its own answer at once when there is no delay.
    SendDue(nowMs);
    if (hungUp) return;
    const XmlNode request(frame.xml, true);
    output.lines.push_back(MessageLine("<-", frame.invokeId, request, {}));
    session.Receive(frame.invokeId, request, nowMs);
    SendDue(nowMs);
}

void Client::SendDue(uint64_t nowMs) {
    if (hungUp) return;
    for (const Message& message : session.TakeDue(nowMs)) {
        output.frames.push_back(EncodeFrame(message.invokeId, message.xml));
        output.lines.push_back(MessageLine("->", message.invokeId, XmlNode(message.xml, true), message.remark));
    }
    if (session.Ended()) HangUp("its session has ended");
}

void Client::HangUp(const ByteString& reason) {
    if (hungUp) return;
    hungUp = true;
    output.hangUp = true;
    output.lines.push_back("-- hanging up: " + reason);
}

}  // namespace velmora::pbxsim
