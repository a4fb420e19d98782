// Another's TLS in front of a PBX that has none, or in front of a client that has none. See front_options.cpp.

#include <poll.h>

#include <cstdio>
#include <memory>

#include "tests/interop/front_options.h"
#include "tests/interop/tcp_socket.h"
#include "tests/support/tls_records.h"
#include "tls/protocol.h"

namespace velmora::interop {
namespace {

// One connection: the end that speaks TLS, and the one in the clear.
class Relay {
public:
    Relay(const FrontOptions& frontOptions, TlsPeer& tlsPeer, int connectionNumber)
        : options(frontOptions), peer(tlsPeer), number(connectionNumber) {}

    // Until either end has gone, or TLS has failed.
    void Run(const TcpSocket& tls, const TcpSocket& plain) {
        Pass(tls, plain, {});
        while (!over) {
            pollfd ends[] = {{tls.Handle(), POLLIN, 0}, {plain.Handle(), POLLIN, 0}};
            // What comes in the clear waits until there is a way for it.
            const bool plainAsWell = peer.State().handshakeComplete && !plainEnded;
            if (poll(ends, plainAsWell ? 2 : 1, -1) < 0) break;
            if (ends[0].revents != 0) FromTls(tls, plain);
            if (plainAsWell && ends[1].revents != 0) FromPlain(tls, plain);
        }
        ReportEnd();
    }

private:
    void FromTls(const TcpSocket& tls, const TcpSocket& plain) {
        const ByteString received = tls.Receive();
        if (received.empty()) over = true;
        Pass(tls, plain, received);
    }

    void FromPlain(const TcpSocket& tls, const TcpSocket& plain) {
        const ByteString received = plain.Receive();
        plainEnded = received.empty();
        if (plainEnded) {
            peer.Close();
        } else {
            peer.Write(received);
        }
        Pass(tls, plain, {});
    }

    void Pass(const TcpSocket& tls, const TcpSocket& plain, const ByteString& received) {
        const ByteString toTls = Tampered(peer.Take(received));
        ReportHandshake();
        if (!tls.Send(toTls, options.splitBytes) || !plain.Send(peer.Read())) over = true;
        const TlsPeerState state = peer.State();
        if (state.failed || state.closeReceived) over = true;
    }

    ByteString Tampered(const ByteString& bytes) {
        if (options.tamperRecord == 0) return bytes;
        std::vector<WireRecord> records = CutRecords(bytes);
        for (WireRecord& record : records) {
            if (record.type != RecordType::kApplicationData || ++dataRecords != options.tamperRecord) continue;
            record.fragment.back() = static_cast<char>(record.fragment.back() ^ 1);
            std::printf("connection %d: record %d tampered with\n", number, dataRecords);
        }
        return JoinRecords(records);
    }

    void ReportHandshake() {
        const TlsPeerState state = peer.State();
        if (handshakeReported || !state.handshakeComplete) return;
        handshakeReported = true;
        std::printf("connection %d: suite %s, server name %s, %s, certificate %s\n", number, state.suite.c_str(),
                    state.serverName.empty() ? "none" : state.serverName.c_str(),
                    state.resumed ? "resumed" : "not resumed", state.peerCertificate.empty() ? "none" : "shown");
    }

    void ReportEnd() const {
        const TlsPeerState state = peer.State();
        if (state.alertReceived >= 0) std::printf("connection %d: received alert %d\n", number, state.alertReceived);
        if (state.failed) std::printf("connection %d: failed: %s\n", number, state.failure.c_str());
        std::printf("connection %d: over\n", number);
    }

    const FrontOptions& options;
    TlsPeer& peer;
    int number;
    int32_t dataRecords = 0;  // sent so far
    bool handshakeReported = false;
    bool plainEnded = false;
    bool over = false;
};

int Serve(const FrontOptions& options) {
    const TcpSocket listener = TcpSocket::Listening(options.listenPort);
    if (!listener.Valid()) {
        std::fprintf(stderr, "tls_front: port %d cannot be had\n", options.listenPort);
        return 1;
    }
    std::printf("listening on 127.0.0.1:%d\n", listener.Port());
    const std::unique_ptr<TlsPeer> peer = MakeTlsPeer(options.implementation, options.peer);
    const bool isClient = options.peer.role == PeerRole::kClient;
    for (int number = 1;; ++number) {
        const TcpSocket near = listener.Accept();
        const TcpSocket far = TcpSocket::Connected(options.farPort);
        if (!far.Valid()) {
            std::printf("connection %d: nobody listens on 127.0.0.1:%d\n", number, options.farPort);
            continue;
        }
        if (number > 1) peer->Restart();
        Relay(options, *peer, number).Run(isClient ? far : near, isClient ? near : far);
    }
}

}  // namespace
}  // namespace velmora::interop

int main(int argumentCount, char** arguments) {
    using namespace velmora::interop;
    // Whoever reads the lines waits for them.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const FrontCommandLine commandLine = ParseFrontCommandLine({arguments + 1, arguments + argumentCount});
    if (!commandLine.fault.empty()) {
        std::fprintf(stderr, "tls_front: %s\n\n%s", commandLine.fault.c_str(), kFrontHelp.data());
        return 2;
    }
    return Serve(commandLine.options);
}
