#include "tests/support/tls_pair.h"

namespace velmora {

TlsPair::TlsPair() {
    client.verifyCertificates = false;
    server.verifyCertificates = false;
}

void TlsPair::Exchange() {
    ByteString toServer = client.Send({});
    ByteString toClient = server.Send({});
    while (!toServer.empty() || !toClient.empty()) {
        serverReceived += server.Feed(toServer);
        clientReceived += client.Feed(toClient);
        toServer = client.Send({});
        toClient = server.Send({});
    }
}

void TlsPair::Handshake() {
    client.StartClientHandshake();
    Exchange();
}

}  // namespace velmora
