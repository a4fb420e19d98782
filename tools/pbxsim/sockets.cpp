#include "tools/pbxsim/sockets.h"

#include <ws2tcpip.h>

#include <memory>

#include "config/text_numbers.h"

namespace velmora::pbxsim {
namespace {

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

AddressList Resolve(const ByteString& address, int32_t port) {
    addrinfo wanted{};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_protocol = IPPROTO_TCP;
    wanted.ai_flags = AI_PASSIVE;
    addrinfo* found = nullptr;
    if (getaddrinfo(address.c_str(), DecimalText(port).c_str(), &wanted, &found) != 0) found = nullptr;
    return {found, freeaddrinfo};
}

ByteString ListenFault(int error) {
    switch (error) {
        case WSAEADDRINUSE:
            return "the port is in use; choose another one with --port, or 0 for any free one";
        case WSAEACCES:
            return "Windows keeps the port for itself; choose another one with --port, or 0 for any free one";
        case WSAEADDRNOTAVAIL:
            return "this machine does not have that address; give one of its own with --bind";
        default:
            return "Winsock error " + DecimalText(error);
    }
}

// "address:port" of a socket address as Winsock gives it.
ByteString Name(const sockaddr_storage& address, int addressBytes) {
    char host[NI_MAXHOST] = "";
    char service[NI_MAXSERV] = "";
    if (getnameinfo(reinterpret_cast<const sockaddr*>(&address), addressBytes, host, sizeof(host), service,
                    sizeof(service), NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return "an unknown address";
    }
    const ByteString hostText = address.ss_family == AF_INET6 ? "[" + ByteString(host) + "]" : host;
    return hostText + ":" + service;
}

}  // namespace

Winsock::Winsock() {
    WSADATA data;
    // A failure shows in the first socket.
    WSAStartup(MAKEWORD(2, 2), &data);
}

Winsock::~Winsock() {
    WSACleanup();
}

Socket Listen(const ByteString& address, int32_t port, ByteString& fault) {
    const AddressList found = Resolve(address, port);
    if (found == nullptr) {
        fault = "there is no such address; give one of this machine's with --bind";
        return {};
    }
    Socket listener(socket(found->ai_family, found->ai_socktype, found->ai_protocol));
    // Two PBXs on one port would share the clients between them at random.
    const BOOL on = TRUE;
    setsockopt(listener.Handle(), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&on), sizeof(on));
    if (bind(listener.Handle(), found->ai_addr, static_cast<int>(found->ai_addrlen)) != 0 ||
        listen(listener.Handle(), SOMAXCONN) != 0) {
        fault = ListenFault(WSAGetLastError());
        return {};
    }
    return listener;
}

ByteString LocalName(const Socket& socket) {
    sockaddr_storage address{};
    int addressBytes = sizeof(address);
    getsockname(socket.Handle(), reinterpret_cast<sockaddr*>(&address), &addressBytes);
    return Name(address, addressBytes);
}

ByteString PeerName(const Socket& socket) {
    sockaddr_storage address{};
    int addressBytes = sizeof(address);
    getpeername(socket.Handle(), reinterpret_cast<sockaddr*>(&address), &addressBytes);
    return Name(address, addressBytes);
}

}  // namespace velmora::pbxsim
