#include "benchmarks/job/pbx.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <cstring>
#include <stdexcept>

#include "benchmarks/job/precise_clock.h"

namespace velmora {
namespace {

constexpr int kPatienceMs = 30000;  // the longest that anything may take on a busy machine

sockaddr_in LoopbackAddress() {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// Bytes from a socket, with the time when the last of them came in: by the system's own stamp, which does not wait
// until this process gets the processor. Less than one byte when the link is down.
struct Reading {
    ssize_t count = 0;
    int64_t arrival = 0;  // on the clock of CounterNow
};

Reading Read(int socket, iovec target) {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timespec))];
    msghdr message = {};
    message.msg_iov = &target;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t count = recvmsg(socket, &message, 0);
    for (cmsghdr* item = CMSG_FIRSTHDR(&message); item != nullptr; item = CMSG_NXTHDR(&message, item)) {
        if (item->cmsg_level != SOL_SOCKET || item->cmsg_type != SCM_TIMESTAMPNS) continue;
        timespec stamp{};
        std::memcpy(&stamp, CMSG_DATA(item), sizeof stamp);
        return {count, CounterOf(stamp)};
    }
    if (count > 0) throw std::runtime_error("the system does not say when bytes have come in");
    return {count, 0};
}

}  // namespace

Pbx::Pbx() : listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    setsockopt(listener.Get(), SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on);  // and so what it accepts
    sockaddr_in address = LoopbackAddress();
    socklen_t bytes = sizeof address;
    auto* const name = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener.Get(), name, bytes) != 0 || listen(listener.Get(), 1) != 0 ||
        getsockname(listener.Get(), name, &bytes) != 0) {
        throw std::runtime_error("the PBX cannot listen on the loopback");
    }
    port = ntohs(address.sin_port);
}

void Pbx::Expect(bool isEncrypted) {
    link = Descriptor();
    encrypted = isEncrypted;
    tls.emplace();
    cutter.Clear();
    frames.clear();
}

void Pbx::WaitForFrames(size_t count) {
    while (frames.size() < count) Serve(-1);
}

void Pbx::WaitForInput(int descriptor) {
    while (!Serve(descriptor)) {
    }
}

bool Pbx::Serve(int descriptor) {
    pollfd waited[] = {{descriptor, POLLIN, 0}, {listener.Get(), POLLIN, 0}, {link.Get(), POLLIN, 0}};
    if (poll(waited, std::size(waited), kPatienceMs) <= 0) throw std::runtime_error("nothing happens any more");
    if (waited[2].revents != 0) Receive();
    if (waited[1].revents != 0) Accept();
    return waited[0].revents != 0;
}

void Pbx::Accept() {
    link = Descriptor(accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    const int on = 1;
    setsockopt(link.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

void Pbx::Receive() {
    char bytes[65536];
    const auto [count, arrival] = Read(link.Get(), {bytes, sizeof bytes});
    if (count <= 0) {
        link = Descriptor();
        return;
    }
    const std::string_view received(bytes, static_cast<size_t>(count));
    if (!encrypted) return TakeStream(ByteString(received), arrival);
    const ByteString stream = tls->Feed(received);
    if (const ByteString answer = tls->Send({}); !answer.empty()) SendWire(answer);
    TakeStream(stream, arrival);
}

void Pbx::TakeStream(const ByteString& stream, int64_t arrival) {
    cutter.Append(stream);
    while (const std::optional<Frame> frame = cutter.Next()) {
        frames.push_back({{frame->invokeId, ByteString(frame->xml)}, arrival});
        if (onFrame) onFrame(frames.size() - 1);
    }
}

ByteString Pbx::OnWire(std::string_view stream) {
    return encrypted ? tls->Send(stream) : ByteString(stream);
}

void Pbx::SendWire(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(link.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) throw std::runtime_error("the link to the provider is down");
        bytes.remove_prefix(static_cast<size_t>(count));
    }
}

}  // namespace velmora
