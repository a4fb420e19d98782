#include "tests/interop/tcp_socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace velmora::interop {
namespace {

sockaddr_in Loopback(uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

const sockaddr* Plain(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

TcpSocket New() {
    return TcpSocket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

void SwitchOn(int handle, int level, int option) {
    const int on = 1;
    setsockopt(handle, level, option, &on, sizeof(on));
}

}  // namespace

TcpSocket::~TcpSocket() {
    if (Valid()) close(handle);
}

TcpSocket TcpSocket::Listening(uint16_t port) {
    TcpSocket listener = New();
    SwitchOn(listener.handle, SOL_SOCKET, SO_REUSEADDR);
    const sockaddr_in address = Loopback(port);
    if (bind(listener.handle, Plain(address), sizeof(address)) != 0) return {};
    if (listen(listener.handle, SOMAXCONN) != 0) return {};
    return listener;
}

TcpSocket TcpSocket::Connected(uint16_t port) {
    TcpSocket connection = New();
    SwitchOn(connection.handle, IPPROTO_TCP, TCP_NODELAY);
    const sockaddr_in address = Loopback(port);
    if (connect(connection.handle, Plain(address), sizeof(address)) != 0) return {};
    return connection;
}

TcpSocket TcpSocket::Accept() const {
    TcpSocket connection(accept4(handle, nullptr, nullptr, SOCK_CLOEXEC));
    SwitchOn(connection.handle, IPPROTO_TCP, TCP_NODELAY);
    return connection;
}

uint16_t TcpSocket::Port() const {
    sockaddr_in address{};
    socklen_t addressBytes = sizeof(address);
    getsockname(handle, reinterpret_cast<sockaddr*>(&address), &addressBytes);
    return ntohs(address.sin_port);
}

ByteString TcpSocket::Receive() const {
    char chunk[65536];
    const ssize_t count = recv(handle, chunk, sizeof(chunk), 0);
    return count <= 0 ? ByteString() : ByteString(chunk, static_cast<size_t>(count));
}

bool TcpSocket::Send(std::string_view bytes, size_t pieceBytes) const {
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, pieceBytes == 0 ? bytes.size() : pieceBytes);
        const ssize_t count = send(handle, piece.data(), piece.size(), MSG_NOSIGNAL);
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

}  // namespace velmora::interop
