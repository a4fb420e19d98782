#include "tests/support/pbx_peer.h"

#include <gtest/gtest.h>
#include <ws2tcpip.h>

#include <algorithm>

namespace velmora {
namespace {

// The provider starts Winsock once in a process and gives it back at each stop. With references to spare, the PBX's own
// sockets live through all the stops of a test.
constexpr int kWinsockReferences = 100;

// More than a test makes: no list of them grows while somebody measures.
constexpr size_t kMostConnections = 2000;

constexpr int kReceiveBufferBytes = 65536;  // small and fixed: a PBX that stops reading is felt soon
constexpr DWORD kSendTimeoutMs = kPatienceMs;
constexpr long kOrderDelayUs = 5000;  // at most, until the PBX's thread carries out an order of the test
constexpr size_t kHeaderBytes = 8;

// Holds the lock for the length of a block.
class Locked {
public:
    explicit Locked(CRITICAL_SECTION& criticalSection) : section(criticalSection) { EnterCriticalSection(&section); }
    ~Locked() { LeaveCriticalSection(&section); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    CRITICAL_SECTION& section;
};

size_t BigEndian(const std::string& bytes, size_t position, size_t count) {
    size_t value = 0;
    for (size_t index = 0; index < count; ++index) {
        value = value * 256 + static_cast<unsigned char>(bytes[position + index]);
    }
    return value;
}

void CloseWithReset(SOCKET socket) {
    const linger reset = {1, 0};
    setsockopt(socket, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&reset), sizeof reset);
    closesocket(socket);
}

// A socket bound to an ephemeral port of address; invalid when there is no such address here.
SOCKET BoundSocket(const std::string& address, uint16_t& port) {
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(address.c_str(), "0", &hints, &found) != 0) return INVALID_SOCKET;
    const SOCKET bound = socket(found->ai_family, SOCK_STREAM, 0);
    const bool done = bind(bound, found->ai_addr, static_cast<int>(found->ai_addrlen)) == 0;
    freeaddrinfo(found);
    sockaddr_in6 name = {};  // the port is at the same place in sockaddr_in
    int nameBytes = sizeof name;
    if (!done || getsockname(bound, reinterpret_cast<sockaddr*>(&name), &nameBytes) != 0) {
        closesocket(bound);
        return INVALID_SOCKET;
    }
    port = ntohs(name.sin6_port);
    return bound;
}

}  // namespace

std::string FrameBytes(uint32_t invokeId, const std::string& xml) {
    const size_t length = kHeaderBytes + xml.size();
    std::string bytes(2, '\0');
    for (const int shift : {8, 0}) bytes += static_cast<char>((length >> shift) & 0xFF);
    for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>((invokeId >> shift) & 0xFF);
    return bytes + xml;
}

std::string ElementText(const std::string& xml, const std::string& name) {
    const std::string startTag = "<" + name + ">";
    const size_t start = xml.find(startTag);
    const size_t end = xml.find("</" + name + ">");
    if (start == std::string::npos || end == std::string::npos) return {};
    return xml.substr(start + startTag.size(), end - start - startTag.size());
}

PbxPeer::PbxPeer(const std::string& address) {
    InitializeCriticalSection(&lock);
    InitializeConditionVariable(&changed);
    connections.reserve(kMostConnections);
    WSADATA data;
    for (int count = 0; count < kWinsockReferences; ++count) EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
    listener = BoundSocket(address, port);
    if (listener == INVALID_SOCKET) return;
    setsockopt(listener, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&kReceiveBufferBytes),
               sizeof kReceiveBufferBytes);
    listening = listen(listener, SOMAXCONN) == 0;
    thread.emplace([this] { Serve(); });
}

PbxPeer::~PbxPeer() {
    StopServing();
    for (const Connection& connection : connections) {
        if (connection.socket != INVALID_SOCKET) closesocket(connection.socket);
    }
    if (listener != INVALID_SOCKET) closesocket(listener);
    for (int count = 0; count < kWinsockReferences; ++count) WSACleanup();
    DeleteCriticalSection(&lock);
}

ReceivedFrame PbxPeer::WaitForFrame(size_t index) {
    if (!WaitForFrames(index + 1)) {
        ADD_FAILURE() << "The PBX never got a frame number " << index << ".";
        return {};
    }
    const Locked locked(lock);
    return frames[index];
}

bool PbxPeer::WaitForFrames(size_t count, uint32_t milliseconds) {
    return WaitUntil([&] { return frames.size() >= count; }, milliseconds);
}

bool PbxPeer::WaitForConnections(size_t count, uint32_t milliseconds) {
    return WaitUntil([&] { return connections.size() >= count; }, milliseconds);
}

bool PbxPeer::WaitForEnd() {
    return WaitUntil([&] { return !connections.empty() && connections.back().ended; }, kPatienceMs);
}

bool PbxPeer::WaitForBytes(size_t count) {
    return WaitUntil([&] { return received.size() >= count; }, kPatienceMs);
}

std::vector<ReceivedFrame> PbxPeer::Frames() {
    const Locked locked(lock);
    return frames;
}

size_t PbxPeer::Connections() {
    const Locked locked(lock);
    return connections.size();
}

std::string PbxPeer::Bytes() {
    const Locked locked(lock);
    return received;
}

bool PbxPeer::SawMalformedFrame() {
    const Locked locked(lock);
    return std::any_of(connections.begin(), connections.end(),
                       [](const Connection& connection) { return connection.malformed; });
}

void PbxPeer::Forget() {
    const Locked locked(lock);
    frames.clear();
    received.clear();
}

bool PbxPeer::Send(const std::string& bytes) {
    SOCKET socket = INVALID_SOCKET;
    {
        const Locked locked(lock);
        if (connections.empty()) return false;
        socket = connections.back().socket;
    }
    size_t sent = 0;
    while (sent < bytes.size()) {
        const int count = send(socket, bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
        if (count <= 0) return false;
        sent += static_cast<size_t>(count);
    }
    return true;
}

void PbxPeer::Reset() {
    EndLatest(Ending::kReset);
}

void PbxPeer::Close() {
    EndLatest(Ending::kClose);
}

void PbxPeer::StopListening() {
    const Locked locked(lock);
    listening = false;
    closesocket(listener);
    listener = INVALID_SOCKET;
}

void PbxPeer::StopServing() {
    {
        const Locked locked(lock);
        stopping = true;
    }
    thread.reset();
}

void PbxPeer::StopReading() {
    const Locked locked(lock);
    reading = false;
}

// The PBX's thread.
void PbxPeer::Serve() {
    std::vector<SOCKET> sockets;
    sockets.reserve(kMostConnections);
    for (;;) {
        fd_set readable;
        FD_ZERO(&readable);
        sockets.clear();
        {
            const Locked locked(lock);
            if (stopping) return;
            CarryOutOrders();
            if (listening) FD_SET(listener, &readable);
            for (const Connection& connection : connections) {
                sockets.push_back(connection.socket);
                if (reading && sockets.back() != INVALID_SOCKET) FD_SET(sockets.back(), &readable);
            }
        }
        timeval wait = {0, kOrderDelayUs};
        if (readable.fd_count == 0) {
            Sleep(kOrderDelayUs / 1000);
            continue;
        }
        if (select(0, &readable, nullptr, nullptr, &wait) <= 0) continue;
        for (size_t index = 0; index < sockets.size(); ++index) {
            if (sockets[index] != INVALID_SOCKET && FD_ISSET(sockets[index], &readable)) Read(index);
        }
        Accept();
    }
}

// Under the lock.
void PbxPeer::CarryOutOrders() {
    for (Connection& connection : connections) {
        if (connection.ending == Ending::kNone) continue;
        if (connection.ending == Ending::kReset) CloseWithReset(connection.socket);
        if (connection.ending == Ending::kClose) closesocket(connection.socket);
        connection.socket = INVALID_SOCKET;
        connection.ended = true;
        connection.ending = Ending::kNone;
        WakeAllConditionVariable(&changed);
    }
}

void PbxPeer::Accept() {
    const Locked locked(lock);
    if (!listening) return;
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(listener, &readable);
    timeval atOnce = {0, 0};
    if (select(0, &readable, nullptr, nullptr, &atOnce) <= 0) return;
    Connection connection;
    connection.socket = accept(listener, nullptr, nullptr);
    if (connection.socket == INVALID_SOCKET) return;
    const BOOL noDelay = TRUE;
    setsockopt(connection.socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay), sizeof noDelay);
    setsockopt(connection.socket, SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<const char*>(&kSendTimeoutMs),
               sizeof kSendTimeoutMs);
    connections.push_back(connection);
    WakeAllConditionVariable(&changed);
}

void PbxPeer::Read(size_t index) {
    std::string bytes(65536, '\0');
    {
        const Locked locked(lock);
        Connection& connection = connections[index];
        const int count = recv(connection.socket, bytes.data(), static_cast<int>(bytes.size()), 0);
        WakeAllConditionVariable(&changed);
        if (count <= 0) {
            closesocket(connection.socket);
            connection.socket = INVALID_SOCKET;
            std::string().swap(connection.stream);
            connection.ended = true;
            return;
        }
        bytes.resize(static_cast<size_t>(count));
        received += bytes;
    }
    // Without the lock: answers are sent from here, and from onFrame.
    if (fromWire) bytes = fromWire(index, bytes);
    std::vector<ReceivedFrame> whole;
    {
        const Locked locked(lock);
        connections[index].stream += bytes;
        whole = CutFrames(connections[index], index);
        frames.insert(frames.end(), whole.begin(), whole.end());
        WakeAllConditionVariable(&changed);
    }
    if (!onFrame) return;
    for (const ReceivedFrame& frame : whole) onFrame(frame);
}

// Under the lock.
std::vector<ReceivedFrame> PbxPeer::CutFrames(Connection& connection, size_t index) {
    std::vector<ReceivedFrame> whole;
    std::string& stream = connection.stream;
    while (!connection.malformed && stream.size() >= kHeaderBytes) {
        const size_t length = BigEndian(stream, 2, 2);
        connection.malformed = BigEndian(stream, 0, 2) != 0 || length < kHeaderBytes;
        if (connection.malformed || stream.size() < length) break;
        ReceivedFrame frame;
        frame.connection = index;
        frame.invokeId = static_cast<uint32_t>(BigEndian(stream, 4, 4));
        frame.bytes = stream.substr(0, length);
        frame.xml = frame.bytes.substr(kHeaderBytes);
        frame.timeMs = PreciseMs();
        stream.erase(0, length);
        whole.push_back(frame);
    }
    return whole;
}

void PbxPeer::EndLatest(Ending ending) {
    {
        const Locked locked(lock);
        if (connections.empty() || connections.back().socket == INVALID_SOCKET) {
            ADD_FAILURE() << "There is no connection to end.";
            return;
        }
        connections.back().ending = ending;
    }
    EXPECT_TRUE(WaitUntil([&] { return connections.back().socket == INVALID_SOCKET; }, kPatienceMs));
}

bool PbxPeer::WaitUntil(const std::function<bool()>& condition, uint32_t milliseconds) {
    const double deadline = PreciseMs() + milliseconds;
    const Locked locked(lock);
    while (!condition()) {
        const double left = deadline - PreciseMs();
        if (left <= 0) return false;
        SleepConditionVariableCS(&changed, &lock, static_cast<DWORD>(left) + 1);
    }
    return true;
}

}  // namespace velmora
