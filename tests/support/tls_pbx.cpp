#include "tests/support/tls_pbx.h"

namespace velmora {

TlsPbx::TlsPbx(PbxPeer& peer) : pbx(peer) {
    pbx.fromWire = [this](size_t connection, const std::string& bytes) { return TakeFromWire(connection, bytes); };
    pbx.toWire = [this](const std::string& stream) { return SendStream(stream); };
}

TlsPbx::~TlsPbx() {
    pbx.StopServing();
}

std::string TlsPbx::SentBytes() {
    const CriticalSectionGuard guard(lock);
    return sentBytes;
}

bool TlsPbx::Failed() {
    const CriticalSectionGuard guard(lock);
    return failed;
}

bool TlsPbx::WaitForAlert() {
    return WaitUntil([this] {
        const CriticalSectionGuard guard(lock);
        return alerted;
    });
}

// Only in a handshake has this end anything to answer. Behind it, a send may be under way that ends only when the
// provider has been read from: this thread must not wait for it.
std::string TlsPbx::TakeFromWire(size_t connection, const std::string& bytes) {
    std::string stream;
    bool answers = false;
    {
        const CriticalSectionGuard guard(lock);
        TlsConnection& end = End(connection);
        answers = !end.HandshakeComplete();
        stream = end.Feed(bytes);
        failed |= end.Failed();
        alerted |= end.PeerAlertReceived();
    }
    if (answers) SendStream({});
    return stream;
}

bool TlsPbx::SendStream(const std::string& stream) {
    const CriticalSectionGuard sendingGuard(sending);
    std::string records;
    {
        const CriticalSectionGuard guard(lock);
        records = End(pbx.Connections() - 1).Send(stream);
        if (keepsSent) sentBytes += records;
    }
    if (records.empty()) return true;
    return sendRecords ? sendRecords(records) : pbx.Send(records);
}

// Under the lock.
TlsConnection& TlsPbx::End(size_t connection) {
    if (!ends.contains(connection)) {
        ends.clear();
        sentBytes.clear();
        ends[connection].resumeSessions = resumeSessions;
    }
    return ends[connection];
}

}  // namespace velmora
