#include "tests/csta/answering_pbx.h"

#include <gtest/gtest.h>

#include <utility>

#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

// Whether a request's root element has this name.
bool HasRoot(const ReceivedFrame& frame, const std::string& root) {
    return frame.xml.find("\r\n<" + root + " ") != std::string::npos;
}

}  // namespace

AnsweringPbx::AnsweringPbx(bool encrypted, std::string duration)
    : grantedSeconds(std::move(duration)), deliver([this](const std::string& bytes) { return peer.Send(bytes); }) {
    peer.onFrame = [this](const ReceivedFrame& frame) { Answer(frame); };
    if (encrypted) {
        tls.emplace(peer);
        tls->sendRecords = [this](const std::string& records) { return deliver(records); };
        return;
    }
    peer.toWire = [this](const std::string& stream) {
        const CriticalSectionGuard guard(sending);
        return deliver(stream);
    };
}

void AnsweringPbx::DeliverBy(std::function<bool(const std::string& bytes)> delivery) {
    deliver = std::move(delivery);
}

bool AnsweringPbx::SendEvents(size_t first, size_t count) {
    for (size_t callId = first; callId < first + count; ++callId) {
        if (!peer.SendFrame(0, CallDelivered(std::to_string(callId)))) return false;
    }
    return true;
}

bool AnsweringPbx::WaitUntilDispatched() {
    const size_t before = Requests("MonitorStart").size();
    if (!peer.SendFrame(1, SessionAccepted("S1", grantedSeconds))) return false;
    size_t count = peer.Frames().size();
    while (Requests("MonitorStart").size() == before) {
        if (!peer.WaitForFrames(count + 1)) return false;
        count = peer.Frames().size();
    }
    return true;
}

std::vector<ReceivedFrame> AnsweringPbx::Requests(const std::string& root) {
    std::vector<ReceivedFrame> requests;
    for (const ReceivedFrame& frame : peer.Frames()) {
        if (HasRoot(frame, root)) requests.push_back(frame);
    }
    return requests;
}

void AnsweringPbx::ExpectWholeFramesInOrder() {
    EXPECT_FALSE(peer.SawMalformedFrame());
    EXPECT_FALSE(tls.has_value() && tls->Failed()) << "a record that is none, or with a wrong MAC";
    std::optional<ReceivedFrame> before;
    for (const ReceivedFrame& frame : peer.Frames()) {
        EXPECT_TRUE(frame.xml.starts_with("<?xml ")) << frame.xml;
        EXPECT_TRUE(frame.xml.ends_with(">\r\n")) << frame.xml;
        if (before.has_value() && before->connection == frame.connection) {
            EXPECT_EQ(frame.invokeId, before->invokeId + 1);
        } else if (before.has_value()) {
            EXPECT_GT(frame.invokeId, before->invokeId);
        }
        before = frame;
    }
}

void AnsweringPbx::Answer(const ReceivedFrame& frame) {
    if (HasRoot(frame, "StartApplicationSession")) {
        peer.SendFrame(frame.invokeId, SessionAccepted("S1", grantedSeconds));
    } else if (HasRoot(frame, "ResetApplicationSessionTimer")) {
        peer.SendFrame(frame.invokeId, SessionTimerReset(grantedSeconds));
    } else if (HasRoot(frame, "MakeCall")) {
        peer.SendFrame(frame.invokeId, CallMade(ElementText(frame.xml, "calledDirectoryNumber"), "D"));
    }
}

}  // namespace velmora
