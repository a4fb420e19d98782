#include "csta/connection.h"

#include "config/clock.h"
#include "config/settings.h"
#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "csta/link.h"
#include "csta/pbx_socket.h"

namespace velmora {
namespace {

constexpr WORD kWinsockVersion = MAKEWORD(2, 2);
constexpr int kReceiveBytes = 1024;  // read from the socket at a time
constexpr DWORD kEndSendsMs = 500;   // for sends under way to end before their socket is closed

}  // namespace

CstaConnection connection;

uint32_t SendRequest(const ByteString& xml) {
    return connection.SendRequest(xml);
}

void ArmKeepalive(const ByteString& sessionId, int32_t durationSeconds) {
    connection.keepalive.Arm(sessionId, durationSeconds, TickCount32());
}

void CstaConnection::StartWinsock() {
    if (winsockStarted) return;
    winsockStarted = true;
    WSADATA data;
    const bool started = WSAStartup(kWinsockVersion, &data) == 0;
    if (started && data.wVersion == kWinsockVersion) return;
    if (started) WSACleanup();
    WriteLog(1, "Could not find a usable WinSock DLL");
}

void CstaConnection::Connect() {
    const SOCKET opened = OpenPbxSocket(ResolvePbx(settings.address, settings.port).get());
    if (opened == INVALID_SOCKET) {
        WriteLog(1, "Connection establishment to \"" + settings.address + "\" failed");
    }
    Connect(opened);
}

void CstaConnection::Connect(SOCKET opened) {
    receiveBuffer.clear();
    cutter.Clear();
    keepalive.Disarm();
    socket = opened;
    if (settings.encrypt) StartTls();
}

// Whatever certificate the PBX shows is accepted: the link is encrypted, the PBX not authenticated. The ClientHello
// leaves with the first request.
void CstaConnection::StartTls() {
    tls.Reset();
    tls.SetLogPrefix("CSTA: ");
    tls.SetExpectedDomain(settings.domain);
    tls.verifyCertificates = false;
    tls.StartClientHandshake();
}

void CstaConnection::Disconnect() {
    const SOCKET open = socket.exchange(INVALID_SOCKET);
    EndSends(open);
    // Winsock ends before the socket is closed. Keep.
    WSACleanup();
    if (open != INVALID_SOCKET) closesocket(open);
}

// A PBX that reads nothing more holds a send up, and closing the socket does not end that everywhere (under Wine it
// does not), so it is cancelled. Sends are made under the lock: when that is free no send of this socket is under way,
// and as the socket is no longer named, none will follow.
void CstaConnection::EndSends(SOCKET open) {
    for (DWORD waitedMs = 0; !lock.IsFree() && waitedMs < kEndSendsMs; ++waitedMs) {
        CancelIoEx(reinterpret_cast<HANDLE>(open), nullptr);
        Sleep(1);
    }
}

uint32_t CstaConnection::SendRequest(const ByteString& xml) {
    const CriticalSectionGuard guard(lock);
    const uint32_t invokeId = nextInvokeId++;
    const ByteString frame = EncodeFrame(invokeId, xml);
    if (frame.empty()) {
        WriteLog(1, "Request not sent, it is too long for a frame: " + DecimalText(static_cast<int64_t>(xml.size())) +
                        " bytes");
        return invokeId;
    }
    WriteLog(5, "CSTA Tx: ", xml);
    if (settings.encrypt) {
        Transmit(tls.Send(frame));
    } else {
        Transmit(frame);
    }
    return invokeId;
}

void CstaConnection::Transmit(const ByteString& bytes) const {
    size_t sent = 0;
    while (sent < bytes.size()) {
        const int count = send(socket, bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
        if (count <= 0) return;  // the link is down; nothing repairs it
        sent += static_cast<size_t>(count);
    }
}

bool CstaConnection::CanReceive(uint32_t timeoutMs) const {
    fd_set readable;
    FD_ZERO(&readable);
    const SOCKET open = socket;
    FD_SET(open, &readable);
    timeval wait = {static_cast<long>(timeoutMs / 1000), static_cast<long>(timeoutMs % 1000 * 1000)};
    return select(0, &readable, nullptr, nullptr, &wait) != 0;
}

bool CstaConnection::Receive() {
    char chunk[kReceiveBytes];
    const int count = recv(socket, chunk, kReceiveBytes, 0);
    if (count <= 0) return false;
    const CriticalSectionGuard guard(lock);
    receiveBuffer.append(chunk, static_cast<size_t>(count));
    return true;
}

void CstaConnection::TakeReceived() {
    if (settings.encrypt) {
        cutter.Append(tls.Feed(receiveBuffer));
        Transmit(tls.Send({}));
    } else {
        cutter.Append(receiveBuffer);
    }
    receiveBuffer.clear();
}

}  // namespace velmora
