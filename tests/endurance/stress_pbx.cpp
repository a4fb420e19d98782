#include "tests/endurance/stress_pbx.h"

#include <gtest/gtest.h>

#include "tests/support/csta_answers.h"
#include "tests/support/xml_judge.h"

namespace velmora {
namespace {

constexpr size_t kLoginsToGetStuck = 40;  // their MonitorStarts have 24 KB each

bool IsRequest(const ReceivedFrame& frame, const std::string& name) {
    return frame.xml.find("<" + name + " ") != std::string::npos;
}

}  // namespace

StressPbx::StressPbx(const RoundPlan& roundPlan, StressLedger& roundLedger, StressTotals& allTotals)
    : plan(roundPlan), ledger(roundLedger), totals(allTotals) {
    peer.onFrame = [this](const ReceivedFrame& frame) { Take(frame); };
}

StressPbx::~StressPbx() {
    EXPECT_FALSE(peer.SawMalformedFrame()) << "bytes that are no frame";
    EXPECT_FALSE(tls.Failed()) << "records that are not TLS, or have a wrong MAC";
}

void StressPbx::BeSilent() {
    tls.sendRecords = [](const std::string& /*records*/) { return true; };
}

void StressPbx::Pour() {
    if (!peer.WaitForConnections(1)) return;
    for (const size_t batch : plan.pouring) {
        const CriticalSectionGuard guard(sending);
        if (!peer.SendStream(Events(batch))) return;
    }
}

bool StressPbx::WaitUntilWorkedOff() {
    AcceptLogins(1);
    return WaitUntil([this] { return monitorStarts >= loginsAccepted; });
}

// On the PBX's thread.
void StressPbx::Take(const ReceivedFrame& frame) {
    ++totals.frames;
    const bool isFirst = lastInvokeId == 0;
    EXPECT_TRUE(isFirst || frame.invokeId == lastInvokeId + 1) << frame.invokeId << " behind " << lastInvokeId;
    EXPECT_EQ(IsRequest(frame, "StartApplicationSession"), isFirst);
    lastInvokeId = frame.invokeId;

    if (isFirst) {
        EXPECT_EQ(ElementText(frame.xml, "tns:userName"), plan.username);
        AcceptLogins(1);
    } else if (IsRequest(frame, "MonitorStart")) {
        EXPECT_EQ(ElementText(frame.xml, "deviceObject"), plan.Device());
        ledger.Confirm(++monitorStarts);
    } else if (IsRequest(frame, "MakeCall")) {
        TakeMakeCall(frame);
    } else if (IsRequest(frame, "ClearConnection")) {
        const std::string callId = ElementText(frame.xml, "callID");
        ledger.TakeCleared(callId, ElementText(frame.xml, "deviceID"));
        if (!callId.empty()) ++totals.bound;
    } else {
        ADD_FAILURE() << "an unknown request: " << frame.xml;
    }
    // Now that it is answered: this takes its time.
    EXPECT_TRUE(IsWellFormedXml(frame.xml)) << frame.xml;
}

void StressPbx::TakeMakeCall(const ReceivedFrame& frame) {
    EXPECT_EQ(ElementText(frame.xml, "callingDevice"), plan.Device());
    const size_t index = ledger.TakeDialled(ElementText(frame.xml, "calledDirectoryNumber"));
    const CallPlan& call = plan.calls[index];
    const CriticalSectionGuard guard(sending);
    std::string stream = Events(call.eventsAround);
    if (call.answered) {
        // The next login's MonitorStart shows that the answer has been worked off, whenever that login is accepted.
        ledger.Answer(index, loginsAccepted + 1);
        stream += FrameBytes(frame.invokeId, CallMade(call.callId, call.deviceId));
    }
    stream += AcceptedLogins(stopsReading ? kLoginsToGetStuck : call.loginsAccepted) + Events(call.eventsAround);
    if (call.answerInPieces) {
        SendInPieces(stream);
    } else {
        peer.SendStream(stream);
    }
    if (stopsReading) peer.StopReading();
    stopsReading = false;
}

void StressPbx::AcceptLogins(size_t count) {
    const CriticalSectionGuard guard(sending);
    peer.SendStream(AcceptedLogins(count));
}

// Under the lock.
std::string StressPbx::AcceptedLogins(size_t count) {
    loginsAccepted += count;
    std::string stream;
    for (size_t index = 0; index < count; ++index) stream += FrameBytes(1, SessionAccepted("S1", "1800"));
    return stream;
}

std::string StressPbx::Events(size_t count) {
    totals.events += count;
    std::string stream;
    for (size_t index = 0; index < count; ++index) stream += FrameBytes(0, CallDelivered(std::to_string(index)));
    return stream;
}

// In records of their own, the first of one byte, so that frames and even their headers are cut.
void StressPbx::SendInPieces(const std::string& stream) {
    for (size_t begin = 0, bytes = 1; begin < stream.size(); begin += bytes, bytes = bytes * 3 + 1) {
        if (!peer.SendStream(stream.substr(begin, bytes))) return;
    }
}

}  // namespace velmora
