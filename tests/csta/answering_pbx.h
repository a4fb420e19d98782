#pragma once

#include "tests/support/tls_pbx.h"
// behind Winsock's header

#include <atomic>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

// A PBX that takes part in the session by itself: on its own thread it accepts each login and renewal and places each
// call, the moment that the request comes. A call's ID is the number dialled.
class AnsweringPbx {
public:
    // duration: the seconds that it grants, as text.
    AnsweringPbx(bool encrypted, std::string duration);

    // It answers no more before anything goes.
    ~AnsweringPbx() { peer.StopServing(); }
    AnsweringPbx(const AnsweringPbx&) = delete;
    AnsweringPbx& operator=(const AnsweringPbx&) = delete;

    // Sends bytes on the wire in place of this class. To be set before the session starts.
    void DeliverBy(std::function<bool(const std::string& bytes)> delivery);

    // Sends so many events of the monitor, whose call IDs count from first on. False when they do not go out.
    bool SendEvents(size_t first, size_t count);

    // Waits until the session has worked off everything that was sent to it so far: has it start one more monitor.
    bool WaitUntilDispatched();

    // The frames of requests of this kind, in order of arrival.
    std::vector<ReceivedFrame> Requests(const std::string& root);

    // Every frame is whole, the record around it too, and those of one connection have come under consecutive invoke
    // IDs. The test fails otherwise.
    void ExpectWholeFramesInOrder();

    PbxPeer peer;

private:
    void Answer(const ReceivedFrame& frame);

    const std::string grantedSeconds;
    CriticalSection sending;  // in the clear, as TlsPbx has one of its own
    std::function<bool(const std::string&)> deliver;
    std::optional<TlsPbx> tls;
};

}  // namespace velmora
