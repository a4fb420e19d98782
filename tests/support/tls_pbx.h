#pragma once

// Winsock's header comes before windows.h.
#include "tests/support/pbx_peer.h"
// and what builds on windows.h behind it
#include "csta/critical_section.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>

#include "tls/tls_connection.h"

namespace velmora {

// Puts TLS between the frames and the wire of a test's PBX: the server's side of the product's own. It shows the
// process's own certificate; each connection gets an end of its own, which lasts until the next one's.
//
// Made before the provider starts; the PBX stops serving when it goes.
class TlsPbx {
public:
    explicit TlsPbx(PbxPeer& peer);
    ~TlsPbx();
    TlsPbx(const TlsPbx&) = delete;
    TlsPbx& operator=(const TlsPbx&) = delete;

    // Whether it gives its sessions IDs and resumes them. To be set before the connection is made.
    bool resumeSessions = false;

    // Sends the records of one flight or frame in place of this class, to split, change or withhold them; on the
    // thread that sends. To be set before the connection is made.
    std::function<bool(const std::string& records)> sendRecords;

    // Whether SentBytes has anything to give: a test that sends very much has no room for it.
    bool keepsSent = true;

    // All records that the latest end has sent, or given to sendRecords.
    std::string SentBytes();

    // Whether one of its ends has ended its connection with an alert: the provider has sent what is not TLS.
    bool Failed();

    // Waits until the provider has sent an alert other than a closure.
    bool WaitForAlert();

private:
    std::string TakeFromWire(size_t connection, const std::string& bytes);
    bool SendStream(const std::string& stream);
    TlsConnection& End(size_t connection);

    PbxPeer& pbx;
    CriticalSection sending;  // held from a record's making to its sending, so that records go out in order
    CriticalSection lock;     // guards what follows; taken behind the other
    std::map<size_t, TlsConnection> ends;  // of the latest connection, by its number
    std::string sentBytes;
    bool failed = false;
    bool alerted = false;
};

}  // namespace velmora
