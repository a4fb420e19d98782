#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <winsock2.h>

#include <atomic>
#include <cerrno>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <vector>

namespace {

thread_local int lastError = 0;

int Fail(int error) {
    lastError = error;
    return SOCKET_ERROR;
}

// What a SOCKET names. Calls under way share its lock, and its closing waits for them: the descriptor that they use
// cannot become another's. A shared lock does not order those who share it, so no call hides a race from another.
class Socket {
public:
    explicit Socket(int opened) : descriptor(opened) {}
    ~Socket() { Close(); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    // Carries out a call of POSIX, which must not wait, until it gives something else than that it would have to wait
    // for an event of poll. -1 with errno otherwise.
    template <typename Call>
    ssize_t Carry(short event, Call call) {
        const std::shared_lock use(inUse);
        while (!closed.load(std::memory_order_relaxed)) {
            const ssize_t result = call(descriptor);
            if (result >= 0 || (errno != EAGAIN && errno != EINTR)) return result;
            if (!WaitFor(event)) return -1;
        }
        errno = ENOTSOCK;
        return -1;
    }

    // Ends the calls that wait. False when it is closed.
    bool Cancel() {
        const std::lock_guard guard(waitersLock);
        WakeWaiters(POLLIN | POLLOUT);
        return !closed.load(std::memory_order_relaxed);
    }

    // False when it has been closed before.
    bool Close() {
        {
            const std::lock_guard guard(waitersLock);
            if (closed.exchange(true, std::memory_order_relaxed)) return false;
            WakeWaiters(POLLIN);
        }
        const std::unique_lock use(inUse);
        close(descriptor);
        return true;
    }

    std::atomic<int> sendTimeoutMs = -1;  // negative: none

private:
    bool WaitFor(short event);

    // A call that waits for an event of poll, and the eventfd that ends it.
    struct Waiter {
        int wake;
        short event;
    };

    // Under waitersLock.
    void WakeWaiters(int events) const {
        for (const Waiter& waiter : waiters) {
            if ((waiter.event & events) != 0) eventfd_write(waiter.wake, 1);
        }
    }

    const int descriptor;
    std::shared_mutex inUse;
    std::mutex waitersLock;
    std::atomic<bool> closed = false;  // written under waitersLock
    std::vector<Waiter> waiters;
};

// Until the event; false when the call is ended before, or has waited for too long.
bool Socket::WaitFor(short event) {
    const int wake = eventfd(0, EFD_CLOEXEC);
    {
        const std::lock_guard guard(waitersLock);
        if (closed.load(std::memory_order_relaxed)) eventfd_write(wake, 1);
        waiters.push_back({wake, event});
    }
    pollfd polled[] = {{descriptor, event, 0}, {wake, POLLIN, 0}};
    const int timeoutMs = event == POLLOUT ? sendTimeoutMs.load(std::memory_order_relaxed) : -1;
    const int happened = poll(polled, std::size(polled), timeoutMs);
    const bool interrupted = happened < 0 && errno == EINTR;
    {
        const std::lock_guard guard(waitersLock);
        std::erase_if(waiters, [&](const Waiter& waiter) { return waiter.wake == wake; });
    }
    close(wake);
    errno = happened == 0 ? ETIMEDOUT : ECANCELED;
    return interrupted || (happened > 0 && polled[1].revents == 0);
}

// Every socket that there ever was, by its number.
std::shared_mutex tableLock;
std::map<SOCKET, std::unique_ptr<Socket>> table;
std::atomic<int> winsockUsers = 0;

SOCKET NewSocket(int descriptor) {
    constexpr SOCKET kFirst = 0x100000000;
    if (descriptor < 0) {
        Fail(errno);
        return INVALID_SOCKET;
    }
    const std::lock_guard guard(tableLock);
    const SOCKET number = kFirst + 4 * table.size();
    table[number] = std::make_unique<Socket>(descriptor);
    return number;
}

Socket* Find(SOCKET number) {
    const std::shared_lock guard(tableLock);
    const auto found = table.find(number);
    return found == table.end() ? nullptr : found->second.get();
}

template <typename Call>
int Carry(SOCKET number, short event, Call call) {
    Socket* found = Find(number);
    if (found == nullptr) return Fail(ENOTSOCK);
    const ssize_t result = found->Carry(event, call);
    return result < 0 ? Fail(errno) : static_cast<int>(result);
}

// A call that does not wait.
template <typename Call>
int Carry(SOCKET number, Call call) {
    return Carry(number, 0, call);
}

int Milliseconds(const timeval* timeout) {
    return timeout == nullptr ? -1 : static_cast<int>(timeout->tv_sec * 1000 + timeout->tv_usec / 1000);
}

}  // namespace

int WSAStartup(WORD version, WSADATA* data) {
    ++winsockUsers;
    data->wVersion = version;
    return 0;
}

int WSACleanup() {
    int users = winsockUsers;
    do {
        if (users == 0) return Fail(ENOTSOCK);
    } while (!winsockUsers.compare_exchange_weak(users, users - 1));
    if (users > 1) return 0;
    const std::shared_lock guard(tableLock);
    for (const auto& [number, open] : table) open->Close();
    return 0;
}

int WSAGetLastError() {
    return lastError;
}

void WSASetLastError(int error) {
    lastError = error;
}

SOCKET socket(int family, __socket_type type, int protocol) {
    if (winsockUsers == 0) return INVALID_SOCKET;
    return NewSocket(socket(family, static_cast<int>(type) | SOCK_CLOEXEC, protocol));
}

int closesocket(SOCKET socket) {
    Socket* found = Find(socket);
    return found != nullptr && found->Close() ? 0 : Fail(ENOTSOCK);
}

BOOL CancelIoEx(HANDLE socket, void* /*overlapped*/) {
    Socket* found = Find(reinterpret_cast<SOCKET>(socket));
    return found != nullptr && found->Cancel() ? 1 : 0;
}

// The time that a send may take is a DWORD with milliseconds.
int setsockopt(SOCKET socket, int level, int option, const char* value, int valueBytes) {
    if (level == SOL_SOCKET && option == SO_SNDTIMEO) {
        Socket* found = Find(socket);
        if (found == nullptr) return Fail(ENOTSOCK);
        found->sendTimeoutMs = static_cast<int>(*reinterpret_cast<const DWORD*>(value));
        return 0;
    }
    return Carry(socket, [&](int descriptor) {
        return setsockopt(descriptor, level, option, static_cast<const void*>(value),
                          static_cast<socklen_t>(valueBytes));
    });
}

int bind(SOCKET socket, const sockaddr* name, int nameBytes) {
    return Carry(socket, [&](int descriptor) { return bind(descriptor, name, static_cast<socklen_t>(nameBytes)); });
}

int getsockname(SOCKET socket, sockaddr* name, int* nameBytes) {
    auto bytes = static_cast<socklen_t>(*nameBytes);
    const int result = Carry(socket, [&](int descriptor) { return getsockname(descriptor, name, &bytes); });
    *nameBytes = static_cast<int>(bytes);
    return result;
}

int listen(SOCKET socket, int backlog) {
    return Carry(socket, [&](int descriptor) { return listen(descriptor, backlog); });
}

SOCKET accept(SOCKET listener, sockaddr* /*name*/, int* /*nameBytes*/) {
    const int accepted =
        Carry(listener, [](int descriptor) { return accept4(descriptor, nullptr, nullptr, SOCK_CLOEXEC); });
    return accepted < 0 ? INVALID_SOCKET : NewSocket(accepted);
}

int connect(SOCKET socket, const sockaddr* name, int nameBytes) {
    return Carry(socket, [&](int descriptor) { return connect(descriptor, name, static_cast<socklen_t>(nameBytes)); });
}

int send(SOCKET socket, const char* bytes, int count, int flags) {
    int sent = 0;
    while (sent < count) {
        const int once = Carry(socket, POLLOUT, [&](int descriptor) {
            return send(descriptor, static_cast<const void*>(bytes + sent), static_cast<size_t>(count - sent),
                        flags | MSG_DONTWAIT | MSG_NOSIGNAL);
        });
        if (once < 0) return SOCKET_ERROR;
        sent += once;
    }
    return sent;
}

int recv(SOCKET socket, char* bytes, int count, int flags) {
    return Carry(socket, POLLIN, [&](int descriptor) {
        return recv(descriptor, static_cast<void*>(bytes), static_cast<size_t>(count), flags | MSG_DONTWAIT);
    });
}

int select(int /*ignored*/, WinsockSet* readable, WinsockSet* /*writable*/, WinsockSet* /*failed*/, timeval* timeout) {
    // A copy of each descriptor, which nobody else closes.
    std::vector<pollfd> polled;
    bool known = true;
    for (unsigned index = 0; index < readable->fd_count; ++index) {
        const int copy = Carry(readable->fd_array[index], [](int descriptor) { return dup(descriptor); });
        known &= copy >= 0;
        polled.push_back({copy, POLLIN, 0});
    }
    const int happened = known ? poll(polled.data(), polled.size(), Milliseconds(timeout)) : Fail(ENOTSOCK);
    WinsockSet ready = {};
    for (size_t index = 0; index < polled.size(); ++index) {
        if (polled[index].revents != 0) FD_SET(readable->fd_array[index], &ready);
        if (polled[index].fd >= 0) close(polled[index].fd);
    }
    *readable = ready;
    return happened < 0 ? SOCKET_ERROR : happened;
}
