#pragma once

#include <winsock2.h>

#include <cstdint>
#include <utility>

#include "config/byte_string.h"

namespace velmora::pbxsim {

// TCP sockets of Winsock, owned. A Winsock must live as long as any of them.

struct Winsock {
    Winsock();
    ~Winsock();
    Winsock(const Winsock&) = delete;
    Winsock& operator=(const Winsock&) = delete;
};

class Socket {
public:
    Socket() = default;
    explicit Socket(SOCKET owned) : handle(owned) {}
    Socket(Socket&& other) noexcept : handle(std::exchange(other.handle, INVALID_SOCKET)) {}
    Socket& operator=(Socket&& other) noexcept {
        std::swap(handle, other.handle);
        return *this;
    }
    ~Socket() {
        if (Valid()) closesocket(handle);
    }

    bool Valid() const { return handle != INVALID_SOCKET; }
    SOCKET Handle() const { return handle; }

private:
    SOCKET handle = INVALID_SOCKET;
};

// A socket that listens on address (a host name or an address in figures) and port (0: any free one). When it cannot,
// the socket is not valid and fault says why, for people.
Socket Listen(const ByteString& address, int32_t port, ByteString& fault);

// The socket's own end and the far end: "127.0.0.1:5050", "[::1]:5050".
ByteString LocalName(const Socket& socket);
ByteString PeerName(const Socket& socket);

}  // namespace velmora::pbxsim
