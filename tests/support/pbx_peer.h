#pragma once

#include <windows.h>
#include <winsock2.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/worker_thread.h"

namespace velmora {

// A frame as it came from the provider.
struct ReceivedFrame {
    size_t connection = 0;  // which connection brought it, counted from 0
    uint32_t invokeId = 0;
    std::string xml;
    std::string bytes;  // header and XML
    double timeMs = 0;  // on the clock of PreciseMs
};

// The bytes of a frame to the provider: two zero bytes, 16-bit length, 32-bit invoke ID (both big-endian), the XML.
std::string FrameBytes(uint32_t invokeId, const std::string& xml);

// The text between the first <name> and </name> of xml; empty when there is none.
std::string ElementText(const std::string& xml, const std::string& name);

// The PBX of a test, on a port of its own on the loopback. It takes connections, records every frame that comes in,
// and sends what the test tells it to, byte for byte: nothing by itself.
//
// What it sends, resets or closes concerns the latest connection. Its waits end at the latest when patience runs out.
class PbxPeer {
public:
    explicit PbxPeer(const std::string& address = "127.0.0.1");

    // Stops serving and closes every connection.
    ~PbxPeer();

    PbxPeer(const PbxPeer&) = delete;
    PbxPeer& operator=(const PbxPeer&) = delete;

    // Whether it could listen on the address: the machine may have no IPv6.
    bool Listens() const { return listening; }
    uint16_t Port() const { return port; }

    // Called on the PBX's thread with each frame as soon as it is there. To be set before the provider starts.
    std::function<void(const ReceivedFrame&)> onFrame;

    // What stands between the frames and the wire; nothing, unless they are set before the provider starts. The first
    // turns what has come in on a connection into the next bytes of its stream of frames, on the PBX's thread; the
    // second sends bytes of that stream on the latest connection.
    std::function<std::string(size_t connection, const std::string& bytes)> fromWire;
    std::function<bool(const std::string& stream)> toWire;

    // The frame at this position in order of arrival, over all connections. Fails the test when it does not come.
    ReceivedFrame WaitForFrame(size_t index);
    bool WaitForFrames(size_t count, uint32_t milliseconds = kPatienceMs);
    bool WaitForConnections(size_t count, uint32_t milliseconds = kPatienceMs);

    // Waits until the provider has ended the latest connection.
    bool WaitForEnd();

    // Waits until this many bytes have come in over all connections.
    bool WaitForBytes(size_t count);

    std::vector<ReceivedFrame> Frames();
    size_t Connections();

    // All bytes from the provider, over all connections.
    std::string Bytes();

    // Bytes on a connection that cannot be a frame were met; the rest of that connection is then not cut into frames.
    bool SawMalformedFrame();

    // Forgets the frames and bytes that have come so far: positions and counts start from here.
    void Forget();

    // Sends bytes in one call, as they are. False when they do not go out in time.
    bool Send(const std::string& bytes);

    // Sends bytes of the stream of frames, by toWire if there is one.
    bool SendStream(const std::string& stream) { return toWire ? toWire(stream) : Send(stream); }
    bool SendFrame(uint32_t invokeId, const std::string& xml) { return SendStream(FrameBytes(invokeId, xml)); }

    // Ends the latest connection: with a TCP reset, or in order.
    void Reset();
    void Close();

    // Refuses further connections.
    void StopListening();

    // Ends its thread: it takes in nothing more, and calls nobody.
    void StopServing();

    // Leaves whatever comes in unread, so that the provider's sends get stuck once the buffers on the way are full.
    void StopReading();

private:
    enum class Ending { kNone, kReset, kClose };

    struct Connection {
        SOCKET socket = INVALID_SOCKET;  // invalid when this end has closed it
        std::string stream;              // received and not yet cut into frames
        bool malformed = false;
        bool ended = false;  // by either end
        Ending ending = Ending::kNone;
    };

    void Serve();
    void CarryOutOrders();
    void Accept();
    void Read(size_t index);
    static std::vector<ReceivedFrame> CutFrames(Connection& connection, size_t index);
    void EndLatest(Ending ending);
    bool WaitUntil(const std::function<bool()>& condition, uint32_t milliseconds);

    // Everything below the lock is shared by the PBX's thread and the test's.
    CRITICAL_SECTION lock;
    CONDITION_VARIABLE changed;
    std::vector<Connection> connections;
    std::vector<ReceivedFrame> frames;
    std::string received;
    bool stopping = false;
    bool reading = true;
    bool listening = false;

    SOCKET listener = INVALID_SOCKET;
    uint16_t port = 0;
    std::optional<WorkerThread> thread;
};

}  // namespace velmora
