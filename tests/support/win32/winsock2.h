#pragma once

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

// Sockets. Structures and constants are the system's own, which have the same names. A call that has a POSIX call of
// its name beside it is told from that by its types.

// A number that fits into no int, and that is never given again.
using SOCKET = uint64_t;

inline constexpr SOCKET INVALID_SOCKET = ~SOCKET{0};
inline constexpr int SOCKET_ERROR = -1;

struct WSADATA {
    WORD wVersion;
};

// Counted. The last WSACleanup closes every socket that is left.
int WSAStartup(WORD version, WSADATA* data);
int WSACleanup();

// Of this thread's last call that failed: its errno.
int WSAGetLastError();
void WSASetLastError(int error);

// The kinds of socket have a type of their own, by which this is preferred to POSIX's.
SOCKET socket(int family, __socket_type type, int protocol);

// Ends every recv that waits in the socket, in any thread. A send it ends on Windows, but not under Wine, and not here:
// whoever closes a socket has to cancel its sends, or waits for them.
int closesocket(SOCKET socket);

int setsockopt(SOCKET socket, int level, int option, const char* value, int valueBytes);
int bind(SOCKET socket, const sockaddr* name, int nameBytes);
int getsockname(SOCKET socket, sockaddr* name, int* nameBytes);
int listen(SOCKET socket, int backlog);

// To be called when a connection is there: nothing ends its waiting. Who connects is not told.
SOCKET accept(SOCKET listener, sockaddr* name, int* nameBytes);

int connect(SOCKET socket, const sockaddr* name, int nameBytes);

// Returns when everything is sent, unless the link fails or somebody ends the call.
int send(SOCKET socket, const char* bytes, int count, int flags);
int recv(SOCKET socket, char* bytes, int count, int flags);

// Windows' sets list their sockets; POSIX's are masks of small numbers.
struct WinsockSet {
    unsigned fd_count;
    SOCKET fd_array[64];
};
#define fd_set WinsockSet
#undef FD_ZERO
#undef FD_SET
#undef FD_ISSET

inline void FD_ZERO(WinsockSet* set) {
    set->fd_count = 0;
}

inline void FD_SET(SOCKET socket, WinsockSet* set) {
    if (set->fd_count < std::size(set->fd_array)) set->fd_array[set->fd_count++] = socket;
}

inline bool FD_ISSET(SOCKET socket, const WinsockSet* set) {
    const SOCKET* end = set->fd_array + set->fd_count;
    return std::find(set->fd_array, end, socket) != end;
}

// Waits for reading only; writable and failed are null. A socket that is closed meanwhile is noticed when the time is
// over.
int select(int ignored, WinsockSet* readable, WinsockSet* writable, WinsockSet* failed, timeval* timeout);
