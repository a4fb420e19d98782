#pragma once

#include <cstdint>
#include <string_view>
#include <utility>

#include "config/byte_string.h"

namespace velmora::interop {

// A TCP socket on loopback, owned.
class TcpSocket {
public:
    TcpSocket() = default;
    explicit TcpSocket(int owned) : handle(owned) {}
    TcpSocket(TcpSocket&& other) noexcept : handle(std::exchange(other.handle, -1)) {}
    TcpSocket& operator=(TcpSocket&& other) noexcept {
        std::swap(handle, other.handle);
        return *this;
    }
    ~TcpSocket();

    // Each gives a socket that is not valid when it cannot be done. Port 0: any free one.
    static TcpSocket Listening(uint16_t port);
    static TcpSocket Connected(uint16_t port);
    TcpSocket Accept() const;

    bool Valid() const { return handle >= 0; }
    int Handle() const { return handle; }
    uint16_t Port() const;  // its own

    // Waits for bytes and gives those that have come; none at the end of the connection.
    ByteString Receive() const;

    // Sends all of it, pieceBytes at a time (0: at once), each as a segment of its own. False: the other end is gone.
    bool Send(std::string_view bytes, size_t pieceBytes = 0) const;

private:
    int handle = -1;
};

}  // namespace velmora::interop
