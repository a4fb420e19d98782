#pragma once

#include "config/byte_string.h"
#include "tls/tls_connection.h"

namespace velmora {

// Two ends joined by two byte strings. The client accepts any certificate; the server shows the process's own.
struct TlsPair {
    TlsPair();

    // Carries bytes to and fro until neither end has any more to send. What arrives as application data is appended to
    // clientReceived and serverReceived.
    void Exchange();

    // Starts the handshake and carries it through.
    void Handshake();

    TlsConnection client;
    TlsConnection server;
    ByteString clientReceived;
    ByteString serverReceived;
};

}  // namespace velmora
