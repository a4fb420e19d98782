#pragma once

#include <winsock2.h>
#include <ws2tcpip.h>

#include <cstdint>
#include <memory>

#include "config/byte_string.h"

namespace velmora {

// The way to the PBX's TCP port, in two steps. Winsock has to be started.

struct AddressListDeleter {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using AddressList = std::unique_ptr<addrinfo, AddressListDeleter>;

// The endpoints of a host name or address, in the resolver's order; null when it does not resolve.
AddressList ResolvePbx(const ByteString& address, int32_t port);

// A socket connected to the first of the endpoints that is one of IPv4 or IPv6 and for which a socket can be made.
// INVALID_SOCKET when there is none, or it cannot be connected to; WSAGetLastError then says why.
SOCKET OpenPbxSocket(const addrinfo* endpoints);

}  // namespace velmora
