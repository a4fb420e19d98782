#pragma once

#include "tests/support/tls_pbx.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/endurance/stress_ledger.h"

namespace velmora {

// What has gone over the wire.
struct StressTotals {
    std::atomic<size_t> frames = 0;  // from the provider
    std::atomic<size_t> events = 0;  // to the provider
    std::atomic<size_t> bound = 0;   // calls that were closed under the name that the PBX has given them
};

// The PBX of one session: it speaks TLS, answers as the round's plan says, at once and from within its receive, and
// examines every frame. A session's invoke IDs follow each other, its requests are whole and say what they must.
class StressPbx {
public:
    // The ledger and the totals live longer.
    StressPbx(const RoundPlan& roundPlan, StressLedger& roundLedger, StressTotals& allTotals);
    StressPbx(const StressPbx&) = delete;
    StressPbx& operator=(const StressPbx&) = delete;

    // No frame was torn, and no MAC wrong.
    ~StressPbx();

    uint16_t Port() const { return peer.Port(); }

    // Makes it one that never answers. Before the provider starts.
    void BeSilent();

    // Makes it one that reads nothing more from the first call on, and has the provider send more than the buffers on
    // the way hold. Before the provider starts.
    void StopReadingAtFirstCall() { stopsReading = true; }

    // Sends events as the plan says. Until it has sent them all or the connection has ended.
    void Pour();

    bool WaitForConnection() { return peer.WaitForConnections(1); }
    bool WaitForEnd() { return peer.WaitForEnd(); }
    void Reset() { peer.Reset(); }

    // Waits until the provider has worked off everything that was sent to it before, on a connection that stands.
    bool WaitUntilWorkedOff();

private:
    void Take(const ReceivedFrame& frame);
    void TakeMakeCall(const ReceivedFrame& frame);
    void AcceptLogins(size_t count);
    std::string AcceptedLogins(size_t count);
    std::string Events(size_t count);
    void SendInPieces(const std::string& stream);

    const RoundPlan& plan;
    StressLedger& ledger;
    StressTotals& totals;
    bool stopsReading = false;
    uint32_t lastInvokeId = 0;               // of the PBX's thread; 0 before the first frame
    CriticalSection sending;                 // held while frames are made and sent, so that they go out in order
    std::atomic<size_t> loginsAccepted = 0;  // each is followed by a MonitorStart; written under the lock
    std::atomic<size_t> monitorStarts = 0;
    PbxPeer peer;
    TlsPbx tls{peer};
};

}  // namespace velmora
