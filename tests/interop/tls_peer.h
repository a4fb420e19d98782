#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "config/byte_string.h"
#include "tests/support/tls_identity.h"

namespace velmora::interop {

// TLS as others have written it, over byte buffers like our own end: no socket.

enum class TlsLibrary { kOpenSsl, kGnuTls };

enum class PeerRole { kServer, kClient };

struct TlsPeerOptions {
    PeerRole role = PeerRole::kServer;
    ByteString suite = "AES128-SHA";  // the only one it has; GnuTLS knows AES256-SHA, RC4-SHA and RC4-MD5 as well, and
                                      // OpenSSL AES256-SHA
    TlsIdentity identity = {};        // a client may do without
    bool laterVersions = false;       // TLS 1.1 and all later ones, besides TLS 1.0

    // The one certificate that it trusts, in DER. With it a server asks for the client's certificate, and a client
    // verifies the server's; either refuses one that it cannot verify. Empty: neither asked for nor verified.
    ByteString trusted = {};
    bool demandsCertificate = false;  // a server refuses a client that shows none

    ByteString serverName = {};    // that a client asks for; empty: it asks for none
    bool resumption = true;        // of sessions, by their ID
    size_t fragmentBytes = 16384;  // in the longest record that it sends; 512 at least
};

// What the peer knows of its connection.
struct TlsPeerState {
    bool handshakeComplete = false;
    bool failed = false;         // the library has given the connection up
    bool closeReceived = false;  // close_notify has come
    bool resumed = false;
    int alertReceived = -1;      // the last other alert's number; -1: none has come
    uint16_t version = 0;        // 0x0301 is TLS 1.0
    ByteString suite;            // named as in the options
    ByteString serverName;       // that the client has asked for; empty: it has asked for none
    ByteString peerCertificate;  // in DER; empty: it has shown none
    ByteString failure;          // in the library's own words
    ByteString received;         // application data that has come and that Read has not given yet
};

class TlsPeer {
public:
    virtual ~TlsPeer() = default;

    // Starts anew, for another connection. A session may be resumed then.
    virtual void Restart() = 0;

    // Takes bytes from the network (often none) and returns those for the network. A client's first call starts the
    // handshake.
    virtual ByteString Take(std::string_view fromNetwork) = 0;

    // Application data to be sent, once the handshake is complete; it leaves with the next Take.
    virtual void Write(std::string_view plaintext) = 0;

    // What a server sends to ask for another handshake leaves with the next Take.
    virtual void AskForRenegotiation() = 0;

    // close_notify leaves with the next Take.
    virtual void Close() = 0;

    virtual TlsPeerState State() const = 0;

    // Gives the application data that has come, and empties it.
    virtual ByteString Read() = 0;
};

std::unique_ptr<TlsPeer> MakeTlsPeer(TlsLibrary library, const TlsPeerOptions& options);

}  // namespace velmora::interop
