#include "csta/pbx_socket.h"

#include "config/text_numbers.h"

namespace velmora {
namespace {

// Requests are small and wait for nothing: without this a request waits some 40 ms for the acknowledgement of the one
// before.
void SendAtOnce(SOCKET socket) {
    const BOOL on = TRUE;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof(on));
}

void CloseKeepingError(SOCKET socket) {
    const int error = WSAGetLastError();
    closesocket(socket);
    WSASetLastError(error);
}

}  // namespace

AddressList ResolvePbx(const ByteString& address, int32_t port) {
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo* list = nullptr;
    if (getaddrinfo(address.c_str(), DecimalText(port).c_str(), &hints, &list) != 0) return nullptr;
    return AddressList(list);
}

// Once a socket exists, no further endpoint is tried. Keep.
SOCKET OpenPbxSocket(const addrinfo* endpoints) {
    for (const addrinfo* entry = endpoints; entry != nullptr; entry = entry->ai_next) {
        if (entry->ai_family != AF_INET && entry->ai_family != AF_INET6) continue;
        const SOCKET opened = ::socket(entry->ai_family, SOCK_STREAM, IPPROTO_TCP);
        if (opened == INVALID_SOCKET) continue;
        SendAtOnce(opened);
        if (connect(opened, entry->ai_addr, static_cast<int>(entry->ai_addrlen)) == 0) return opened;
        CloseKeepingError(opened);
        return INVALID_SOCKET;
    }
    return INVALID_SOCKET;
}

}  // namespace velmora
