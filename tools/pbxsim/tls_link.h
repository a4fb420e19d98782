#pragma once

#include <vector>

#include "config/byte_string.h"
#include "tls/tls_connection.h"
#include "tools/alert_watch.h"

namespace velmora::pbxsim {

// The PBX's end of TLS on one connection: the bytes of the socket on one side, the plain stream of frames on the other.
// It shows the process's own certificate (crypto/trust_store.h) and resumes sessions.
//
// It ends the connection, for good and with a reason for people, on what is no TLS, on an alert of either end that is
// not a mere warning, and when the client closes TLS. What is received behind that is dropped.
class TlsLink {
public:
    // Whether handshakes are carried through, or each refused with an alert.
    enum class Answer { kHandshake, kRefusal };

    explicit TlsLink(Answer givenAnswer);

    // Takes bytes from the socket, however they were cut; gives what they hold of the plain stream.
    ByteString Receive(const ByteString& bytes);

    // Takes bytes of the plain stream, often none; gives what is to be written to the socket now, an alert before the
    // end included.
    ByteString Send(const ByteString& plaintext);

    // What is to be printed since the last call: that the link is encrypted now, and with what.
    std::vector<ByteString> TakeLines();

    // Why the connection is to be ended; empty while it goes on.
    const ByteString& EndReason() const { return endReason; }

private:
    void Refuse(const ByteString& bytes);
    void Collect(const ByteString& plaintext);
    void TakeReceivedAlert(const SeenAlert& alert);
    ByteString OwnAlertReason(bool wasComplete) const;
    ByteString CipherLine() const;
    void End(const ByteString& reason);

    Answer answer;
    TlsConnection tls;
    AlertWatch received;
    AlertWatch sent;
    SeenAlert sentAlert;  // the last one of this end
    ByteString hello;     // what a client that is refused has sent so far
    ByteString output;    // to be written to the socket
    std::vector<ByteString> lines;
    ByteString endReason;
    bool started = false;    // the first byte has come
    bool announced = false;  // that the link is encrypted
};

}  // namespace velmora::pbxsim
