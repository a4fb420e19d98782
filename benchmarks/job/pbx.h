#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "benchmarks/job/descriptor.h"
#include "config/byte_string.h"
#include "csta/framing.h"
#include "tls/tls_connection.h"

namespace velmora {

// A frame of the provider.
struct Request {
    uint32_t invokeId = 0;
    ByteString xml;

    bool operator==(const Request&) const = default;
};

// One as it came in.
struct ArrivedFrame {
    Request frame;
    int64_t arrival = 0;  // on the clock of CounterNow, when its last byte came in
};

// The PBX of the benchmark, on a port of its own on the loopback. It takes one connection at a time and works only
// while its owner waits for something: no thread. Encrypted it is the server's side of the product's own TLS, whose
// random bytes are always the same, so that the bytes of a job can be known beforehand.
//
// Waiting too long for anything throws std::runtime_error.
class Pbx {
public:
    Pbx();

    uint16_t Port() const { return port; }

    // Forgets everything for the next connection.
    void Expect(bool isEncrypted);

    // Called with each frame when it has come in. Its number counts from 0.
    std::function<void(size_t number)> onFrame;

    // Serves the link until there are this many frames, or another file descriptor can be read.
    void WaitForFrames(size_t count);
    void WaitForInput(int descriptor);

    const std::vector<ArrivedFrame>& Frames() const { return frames; }

    // What goes over the wire for bytes of the stream of frames, to be sent in the order of these calls.
    ByteString OnWire(std::string_view stream);
    void SendWire(std::string_view bytes);

private:
    // At most until one of the sockets, or the descriptor, can be read. Gives whether the descriptor can.
    bool Serve(int descriptor);
    void Accept();
    void Receive();
    void TakeStream(const ByteString& stream, int64_t arrival);

    Descriptor listener;
    uint16_t port = 0;
    Descriptor link;
    bool encrypted = false;
    std::optional<TlsConnection> tls;
    FrameCutter cutter;
    std::vector<ArrivedFrame> frames;
};

}  // namespace velmora
