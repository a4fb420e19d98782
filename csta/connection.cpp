#include "csta/connection.h"

#include <ws2tcpip.h>

#include <memory>

#include "config/clock.h"
#include "config/settings.h"
#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "csta/link.h"

namespace velmora {
namespace {

constexpr WORD kWinsockVersion = MAKEWORD(2, 2);
constexpr int kReceiveBytes = 1024;  // read from the socket at a time
constexpr DWORD kEndSendsMs = 500;   // for sends under way to end before their socket is closed

struct AddressListDeleter {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using AddressList = std::unique_ptr<addrinfo, AddressListDeleter>;

AddressList Resolve(const ByteString& address, int32_t port) {
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo* list = nullptr;
    if (getaddrinfo(address.c_str(), DecimalText(port).c_str(), &hints, &list) != 0) return nullptr;
    return AddressList(list);
}

// Requests are small and wait for nothing: without this a request waits some 40 ms for the acknowledgement of the one
// before.
void SendAtOnce(SOCKET socket) {
    const BOOL on = TRUE;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof(on));
}

// A connected socket, or INVALID_SOCKET. Once a socket exists, no further address is tried. Keep.
SOCKET OpenSocket(const ByteString& address, int32_t port) {
    const AddressList list = Resolve(address, port);
    for (const addrinfo* entry = list.get(); entry != nullptr; entry = entry->ai_next) {
        if (entry->ai_family != AF_INET && entry->ai_family != AF_INET6) continue;
        const SOCKET opened = ::socket(entry->ai_family, SOCK_STREAM, IPPROTO_TCP);
        if (opened == INVALID_SOCKET) continue;
        SendAtOnce(opened);
        if (connect(opened, entry->ai_addr, static_cast<int>(entry->ai_addrlen)) == 0) return opened;
        closesocket(opened);
        return INVALID_SOCKET;
    }
    return INVALID_SOCKET;
}

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
    receiveBuffer.clear();
    cutter.Clear();
    keepalive.Disarm();
    socket = OpenSocket(settings.address, settings.port);
    if (socket == INVALID_SOCKET) {
        WriteLog(1, "Connection establishment to \"" + settings.address + "\" failed");
    }
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
    Transmit(settings.encrypt ? tls.Send(frame) : frame);
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
