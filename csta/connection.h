#pragma once

#include <winsock2.h>

#include <atomic>
#include <cstdint>
#include <optional>

#include "config/byte_string.h"
#include "csta/critical_section.h"
#include "csta/framing.h"
#include "csta/keepalive.h"
#include "tls/tls_connection.h"

namespace velmora {

// The one TCP link to the PBX. It knows bytes and frames; whose threads call it and what a frame means is the session's
// affair.
//
// The lock guards every field but the socket: TAPI's threads and the session thread send, the receive thread appends,
// the session thread takes out. Each operation says whether it takes the lock or expects it held.
class CstaConnection {
public:
    CriticalSection lock;
    Keepalive keepalive;

    // Starts Winsock, once in the life of the process. A failure is logged.
    void StartWinsock();

    // Connects to the settings' address and port, with nothing left of an earlier connection. One address is tried, the
    // first that names a TCP endpoint; a failure is logged and leaves the link down. Before any thread of the session.
    void Connect();

    // Makes a socket the link instead, or leaves it down with INVALID_SOCKET. It closes the socket in the end.
    void Connect(SOCKET opened);

    // Ends the link, a send or a Receive that waits in it included. Does not wait for the lock.
    void Disconnect();

    // See link.h. Takes the lock.
    uint32_t SendRequest(const ByteString& xml);

    // Waits until Receive would return at once; false when that is not so after timeoutMs.
    bool CanReceive(uint32_t timeoutMs) const;

    // Waits for bytes and keeps them for NextFrame; takes the lock for that. False when the link is down.
    bool Receive();

    // What Receive has kept and TakeReceived not yet taken. Lock held.
    const ByteString& Received() const { return receiveBuffer; }

    // Turns all bytes that Receive has kept into the plain stream of frames, and sends what TLS answers to them. Lock
    // held.
    void TakeReceived();

    // The next whole frame of the plain stream; none when more bytes are needed. Lock held.
    std::optional<Frame> NextFrame() { return cutter.Next(); }

    // The link's end of TLS; of no meaning while encrypt is off. Lock held.
    const TlsConnection& Tls() const { return tls; }

private:
    void StartTls();
    void EndSends(SOCKET open);
    void Transmit(const ByteString& bytes) const;

    bool winsockStarted = false;  // never cleared, although Disconnect ends Winsock. Keep
    std::atomic<SOCKET> socket = INVALID_SOCKET;
    uint32_t nextInvokeId = 1;
    ByteString receiveBuffer;  // bytes as they came from the socket
    TlsConnection tls;         // between those and the plain stream, when the link is encrypted
    FrameCutter cutter;        // what of the plain stream is not cut into frames yet
};

extern CstaConnection connection;

}  // namespace velmora
