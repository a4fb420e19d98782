#include "tests/interop/tls_dialogue.h"

#include <utility>

namespace velmora::interop {

TlsDialogue::TlsDialogue(std::unique_ptr<TlsPeer> otherEnd, PeerRole itsRole)
    : peer(std::move(otherEnd)), weAreClient(itsRole == PeerRole::kServer) {
    ours.verifyCertificates = false;
}

TlsDialogue::TlsDialogue(TlsLibrary library, const TlsPeerOptions& peerOptions)
    : TlsDialogue(MakeTlsPeer(library, peerOptions), peerOptions.role) {}

void TlsDialogue::Send(const ByteString& data) {
    ByteString toUs;
    ByteString toPeer = ours.Send(data);
    do {
        if (onWayToPeer) toPeer = onWayToPeer(toPeer);
        toUs = peer->Take(toPeer);
        if (onWayToUs) toUs = onWayToUs(toUs);
        FeedOurs(toUs);
        toPeer = ours.Send({});
    } while (!toUs.empty() || !toPeer.empty());
}

void TlsDialogue::FeedOurs(const ByteString& bytes) {
    for (size_t position = 0; position < bytes.size();) {
        const ByteString piece = bytes.substr(position, feedBytes);
        received += ours.Feed(piece);
        position += piece.size();
    }
}

void TlsDialogue::Handshake() {
    if (weAreClient) ours.StartClientHandshake();
    Exchange();
}

void TlsDialogue::Reconnect() {
    const bool resumes = ours.resumeSessions;
    if (weAreClient) {
        ours.Reset();
    } else {
        ours = TlsConnection();
    }
    ours.verifyCertificates = false;
    ours.resumeSessions = resumes;
    received.clear();
    peer->Restart();
    Handshake();
}

bool TlsDialogue::IsUp() const {
    const TlsPeerState state = peer->State();
    return ours.HandshakeComplete() && !ours.Failed() && !ours.PeerAlertReceived() && state.handshakeComplete &&
           !state.failed && state.alertReceived < 0;
}

bool TlsDialogue::Carries(const ByteString& data) {
    received.clear();
    peer->Write(data);
    Send(data);
    return received == data && peer->Read() == data;
}

}  // namespace velmora::interop
