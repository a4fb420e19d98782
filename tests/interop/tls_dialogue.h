#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "config/byte_string.h"
#include "tests/interop/tls_peer.h"
#include "tls/tls_connection.h"

namespace velmora::interop {

// Our end and another's, joined by byte strings.
class TlsDialogue {
public:
    TlsDialogue(std::unique_ptr<TlsPeer> otherEnd, PeerRole itsRole);
    TlsDialogue(TlsLibrary library, const TlsPeerOptions& peerOptions);

    // Carries bytes to and fro until neither end has any more to send. What comes out at our end is appended to
    // received.
    void Exchange() { Send({}); }

    // The same, with data that our end sends.
    void Send(const ByteString& data);

    // Starts the handshake, whichever end is the client, and carries it through.
    void Handshake();

    // Another connection with its handshake: a client of ours is put back to its start, in place of a server comes a
    // new one.
    void Reconnect();

    // Our end and the peer have completed the handshake, and nothing has gone wrong.
    bool IsUp() const;

    // Sends data both ways and tells whether it has come as it was sent.
    bool Carries(const ByteString& data);

    TlsConnection ours;
    std::unique_ptr<TlsPeer> peer;
    ByteString received;
    size_t feedBytes = ByteString::npos;  // the most that our end is fed at a time

    // What is done to the bytes on their way.
    std::function<ByteString(const ByteString&)> onWayToUs;
    std::function<ByteString(const ByteString&)> onWayToPeer;

private:
    void FeedOurs(const ByteString& bytes);

    bool weAreClient;
};

}  // namespace velmora::interop
