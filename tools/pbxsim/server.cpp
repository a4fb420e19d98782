#include "tools/pbxsim/server.h"

#include <algorithm>
#include <cstdio>
#include <deque>
#include <list>

#include "config/clock.h"
#include "config/text_numbers.h"
#include "tools/pbxsim/channel.h"
#include "tools/pbxsim/identity.h"
#include "tools/pbxsim/sockets.h"
#include "tools/pbxsim/test_identity.h"

namespace velmora::pbxsim {
namespace {

constexpr int kReceiveBytes = 4096;

// A client and its socket.
struct Connection {
    Connection(Pbx& pbx, Encryption encryption, Socket accepted, int32_t ordinal)
        : socket(std::move(accepted)), channel(pbx, encryption), number(ordinal) {}

    Socket socket;
    Channel channel;
    int32_t number;                 // how people tell clients apart: 1, 2, ...
    std::deque<ByteString> unsent;  // each is one call of send
    bool hangingUp = false;         // to be closed once all is sent
    bool gone = false;              // to be forgotten
};

// Prints a line; a reader that has gone is no reason to stop serving.
void Print(const ByteString& line) {
    static_cast<void>(std::printf("%s\n", line.c_str()));
    static_cast<void>(std::fflush(stdout));
}

// The time of day, "12:00:01.234".
ByteString TimeText() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    char text[sizeof("12:00:01.234")] = "";
    static_cast<void>(std::snprintf(text, sizeof(text), "%02u:%02u:%02u.%03u", now.wHour % 100U, now.wMinute % 100U,
                                    now.wSecond % 100U, now.wMilliseconds % 1000U));
    return text;
}

Encryption EncryptionOf(const Options& options) {
    if (!options.tls) return Encryption::kNone;
    return options.refuseTls ? Encryption::kTlsRefused : Encryption::kTls;
}

// Takes up the identity that the options ask for. Gives what people should know of it, and a fault that keeps the PBX
// from starting.
ByteString SetUpIdentity(const Options& options, ByteString& fault) {
    if (options.certificateFile.empty()) {
        const Identity test = TestIdentity();
        UseIdentity(test);
        return "TLS with the \"" + CommonNameOf(test) +
               "\", whose private key everyone has; give your own with --cert and --key";
    }
    const Identity identity = LoadIdentity(options.certificateFile, options.keyFile, fault);
    if (!fault.empty()) return {};
    UseIdentity(identity);
    return "TLS with the certificate of \"" + CommonNameOf(identity) + "\"";
}

// One event tells of whatever happens on any socket; each turn then tries them all, none of which ever blocks.
class Server {
public:
    Server(const Options& givenOptions, Socket listening)
        : options(givenOptions),
          listener(std::move(listening)),
          socketEvent(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
        pbx.behaviour = options.behaviour;
        WSAEventSelect(listener.Handle(), socketEvent, FD_ACCEPT);
    }
    ~Server() { CloseHandle(socketEvent); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    void Run(HANDLE stop) {
        const HANDLE events[] = {stop, socketEvent};
        while (!(options.once && lost > 0)) {
            if (WaitForMultipleObjects(2, events, FALSE, WaitMs()) == WAIT_OBJECT_0) return;
            AcceptClients();
            for (Connection& connection : connections) TakeTurn(connection);
            connections.remove_if([](const Connection& connection) { return connection.gone; });
        }
    }

private:
    // Until the next message is due; INFINITE when none waits.
    DWORD WaitMs() const {
        const uint64_t nowMs = TickCount64();
        uint64_t waitMs = INFINITE;
        for (const Connection& connection : connections) {
            const std::optional<uint64_t> dueMs = connection.channel.NextDueMs();
            if (dueMs) waitMs = std::min(waitMs, std::max(*dueMs, nowMs) - nowMs);
        }
        return static_cast<DWORD>(waitMs);
    }

    void AcceptClients() {
        while (true) {
            Socket accepted(accept(listener.Handle(), nullptr, nullptr));
            if (!accepted.Valid()) return;
            // Without this the pieces of --split would be joined again on the way.
            const BOOL on = TRUE;
            setsockopt(accepted.Handle(), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof(on));
            WSAEventSelect(accepted.Handle(), socketEvent, FD_READ | FD_WRITE | FD_CLOSE);
            connections.emplace_back(pbx, EncryptionOf(options), std::move(accepted), ++accepts);
            Tell(connections.back(), "-- connected from " + PeerName(connections.back().socket));
        }
    }

    void TakeTurn(Connection& connection) {
        SendUnsent(connection);
        // A client that does not take its answers is not listened to: what waits for it stays bounded.
        if (connection.unsent.empty() && !connection.hangingUp) ReceiveOnce(connection);
        if (!connection.gone) TakeOutput(connection);
        SendUnsent(connection);
        if (connection.hangingUp && connection.unsent.empty()) connection.gone = true;
        if (connection.gone) ++lost;
    }

    // One call a turn, so that a busy client does not keep the others waiting; what is left over sets the event again.
    void ReceiveOnce(Connection& connection) {
        char bytes[kReceiveBytes];
        const int count = recv(connection.socket.Handle(), bytes, kReceiveBytes, 0);
        if (count > 0) {
            connection.channel.Receive(ByteString(bytes, static_cast<size_t>(count)), TickCount64());
        } else if (count == 0 || WSAGetLastError() != WSAEWOULDBLOCK) {
            Lose(connection);
        }
    }

    void TakeOutput(Connection& connection) {
        const ChannelOutput output = connection.channel.TakeOutput(TickCount64());
        for (const ByteString& line : output.lines) Tell(connection, line);
        for (const ByteString& chunk : output.chunks) QueueBytes(connection, chunk);
        if (output.hangUp) connection.hangingUp = true;
    }

    void QueueBytes(Connection& connection, const ByteString& bytes) const {
        const size_t pieceBytes = options.splitBytes > 0 ? static_cast<size_t>(options.splitBytes) : bytes.size();
        for (size_t start = 0; start < bytes.size(); start += pieceBytes) {
            connection.unsent.push_back(bytes.substr(start, pieceBytes));
        }
    }

    void SendUnsent(Connection& connection) {
        while (!connection.gone && !connection.unsent.empty()) {
            ByteString& piece = connection.unsent.front();
            const int count = send(connection.socket.Handle(), piece.data(), static_cast<int>(piece.size()), 0);
            if (count < 0) {
                if (WSAGetLastError() != WSAEWOULDBLOCK) Lose(connection);
                return;
            }
            piece.erase(0, static_cast<size_t>(count));
            if (piece.empty()) connection.unsent.pop_front();
        }
    }

    void Lose(Connection& connection) {
        connection.gone = true;
        Tell(connection, "-- gone");
    }

    void Tell(const Connection& connection, const ByteString& line) const {
        if (options.quiet) return;
        const ByteString number = DecimalText(connection.number);
        Print(TimeText() + (number.size() < 2 ? "  " : " ") + number + " " + line);
    }

    const Options& options;
    Pbx pbx;
    Socket listener;
    HANDLE socketEvent;  // auto-reset
    std::list<Connection> connections;
    int32_t accepts = 0;  // clients so far
    int32_t lost = 0;     // of these, no longer there
};

}  // namespace

bool Serve(const Options& options, HANDLE stop) {
    const Winsock winsock;
    ByteString fault;
    const ByteString identityLine = options.tls ? SetUpIdentity(options, fault) : ByteString();
    if (!fault.empty()) {
        static_cast<void>(std::fprintf(stderr, "pbxsim: %s\n", fault.c_str()));
        return false;
    }
    Socket listener = Listen(options.bindAddress, options.port, fault);
    if (!listener.Valid()) {
        static_cast<void>(std::fprintf(stderr, "pbxsim: cannot listen on %s, port %s: %s\n",
                                       options.bindAddress.c_str(), DecimalText(options.port).c_str(), fault.c_str()));
        return false;
    }
    Print("pbxsim: listening on " + LocalName(listener));
    if (!identityLine.empty()) Print("pbxsim: " + identityLine);
    // cppcheck-suppress accessMoved; the move itself is taken for a later use.
    Server(options, std::move(listener)).Run(stop);
    return true;
}

}  // namespace velmora::pbxsim
