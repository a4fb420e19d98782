#include <ctime>

#include <algorithm>
#include <cmath>

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/job/messages.h"
#include "benchmarks/ratio_line.h"
#include "csta/dispatch.h"
#include "csta/framing.h"
#include "tests/support/counted_memory.h"
#include "tests/support/tls_identity.h"
#include "tls/tls_connection.h"

// How the cost of what comes from the PBX grows: with the number of events that come at once, with the length of a
// message, and when they come in the smallest pieces. From TLS through framing and the tree to dispatch, as the session
// thread calls them; no socket, no thread.
//
// Printed is the exponent: the slope of time over amount in a plot of their logarithms, by least squares. 1 is time in
// proportion to the amount, 2 to its square; below 1 a fixed part is noticeable.

namespace velmora {
namespace {

constexpr int kCaseColumns = 44;
constexpr size_t kReadBytes = 1024;       // what the provider reads from its socket at a time
constexpr size_t kLateReadBytes = 65536;  // what has come in meanwhile when the session thread is late
constexpr double kTurnSeconds = 0.01;     // at least, that a load is measured in a turn
constexpr int kTurns = 9;

void BindNoCall(uint32_t /*invokeId*/, const ByteString& /*callId*/, const ByteString& /*deviceId*/) {}

// The receiving end of the link.
class Receiver {
public:
    explicit Receiver(bool isEncrypted) : encrypted(isEncrypted) {}

    // Takes bytes from the wire, piece by piece.
    void Take(const std::vector<ByteString>& pieces) {
        for (const ByteString& piece : pieces) {
            if (encrypted) {
                cutter.Append(client.Feed(piece));
            } else {
                cutter.Append(piece);
            }
            while (const std::optional<Frame> frame = cutter.Next()) Dispatch(frame->invokeId, frame->xml, BindNoCall);
        }
    }

    // The bytes on the wire for frames that come next.
    ByteString Wire(const ByteString& frame, size_t count) {
        if (encrypted && !server.HandshakeComplete()) ShakeHands();
        ByteString wire;
        for (size_t sent = 0; sent < count; ++sent) wire += encrypted ? server.Send(frame) : frame;
        return wire;
    }

private:
    void ShakeHands() {
        client.verifyCertificates = false;
        client.StartClientHandshake();
        while (!client.HandshakeComplete()) {
            server.Feed(client.Send({}));
            client.Feed(server.Send({}));
        }
    }

    bool encrypted;
    TlsConnection client;
    TlsConnection server;
    FrameCutter cutter;
};

std::vector<ByteString> CutInPieces(const ByteString& wire, size_t pieceBytes) {
    std::vector<ByteString> pieces;
    for (size_t position = 0; position < wire.size(); position += std::min(pieceBytes, wire.size() - position)) {
        pieces.push_back(wire.substr(position, pieceBytes));
    }
    return pieces;
}

double ProcessorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// So many times this frame at once, which come in pieces.
struct Load {
    ByteString frame;
    size_t count = 0;
    size_t pieceBytes = 0;
    double amount = 0;               // what the exponent is about: events or bytes
    double leastSeconds = HUGE_VAL;  // over all turns

    void Measure(bool encrypted) {
        Receiver receiver(encrypted);
        double seconds = 0;
        int rounds = 0;
        for (; seconds < kTurnSeconds; ++rounds) {
            const std::vector<ByteString> pieces = CutInPieces(receiver.Wire(frame, count), pieceBytes);
            const double start = ProcessorSeconds();
            receiver.Take(pieces);
            seconds += ProcessorSeconds() - start;
        }
        leastSeconds = std::min(leastSeconds, seconds / rounds);
    }
};

// A list of devices, as long as this or a little less.
ByteString ListFrame(size_t bytes) {
    const ByteString entry =
        "<device><deviceID>40@pbx.velmora.example</deviceID><name>Extension 40 &amp; Co.</name></device>\n";
    const ByteString head = R"(<?xml version="1.0" encoding="UTF-8"?><GetSwitchingFunctionDevicesResponse>)";
    const ByteString tail = "</GetSwitchingFunctionDevicesResponse>";
    ByteString xml = head;
    while (kFrameHeaderBytes + xml.size() + entry.size() + tail.size() <= bytes) xml += entry;
    return EncodeFrame(1, xml + tail);
}

std::vector<Load> Bursts(size_t pieceBytes) {
    std::vector<Load> loads;
    for (const size_t count : {10U, 100U, 1000U, 10000U, 100000U}) {
        loads.push_back({EventFrame(), count, pieceBytes, static_cast<double>(count)});
    }
    return loads;
}

std::vector<Load> Lengths(size_t pieceBytes) {
    std::vector<Load> loads;
    for (size_t bytes = 1024; bytes <= kFrameMaxBytes + 1; bytes *= 2) {
        const ByteString frame = ListFrame(std::min(bytes, kFrameMaxBytes));
        loads.push_back({frame, 1, pieceBytes, static_cast<double>(frame.size())});
    }
    return loads;
}

double MeasureExponent(std::vector<Load> loads, bool encrypted, int turns) {
    for (int turn = 0; turn < turns; ++turn) {
        for (Load& load : loads) load.Measure(encrypted);
    }
    double sumX = 0;
    double sumY = 0;
    double sumXx = 0;
    double sumXy = 0;
    for (const Load& load : loads) {
        const double x = std::log(load.amount);
        const double y = std::log(load.leastSeconds);
        sumX += x;
        sumY += y;
        sumXx += x * x;
        sumXy += x * y;
    }
    const auto count = static_cast<double>(loads.size());
    return (count * sumXy - sumX * sumY) / (count * sumXx - sumX * sumX);
}

// Of all that an event makes us allocate, once the buffers that are kept have their size.
double AllocatedBytes() {
    Receiver receiver(false);
    const std::vector<ByteString> event = CutInPieces(receiver.Wire(EventFrame(), 1), kReadBytes);
    receiver.Take(event);
    const size_t before = TakenBytes();
    receiver.Take(event);
    return static_cast<double>(TakenBytes() - before);
}

void PrintGrowth(TableForm form, int turns) {
    for (const bool encrypted : {false, true}) {
        const std::string unit = encrypted ? "growth-encrypted" : "growth";
        const auto print = [&](const char* caseName, const std::vector<Load>& loads) {
            PrintRatioLine({unit, caseName, MeasureExponent(loads, encrypted, turns), 0, "", "exponent"}, form,
                           kCaseColumns);
        };
        print("10 to 100,000 events in pieces of 64 KB", Bursts(kLateReadBytes));
        print("10 to 100,000 events in pieces of 1 KB", Bursts(kReadBytes));
        print("a message of 1 to 64 KB", Lengths(kReadBytes));
        print("a message of 1 to 64 KB, byte by byte", Lengths(1));
    }
}

}  // namespace
}  // namespace velmora

int main(int argc, char** argv) {
    using namespace velmora;
    TableOptions options;
    for (const std::string& argument : std::vector<std::string>(argv + 1, argv + argc)) {
        if (TakeOption(argument, options)) continue;
        static_cast<void>(std::fputs("usage: growth_bench [--tsv] [--benchmark_repetitions=N]\n", stderr));
        return 2;
    }
    UseTlsIdentity("rsa1024");
    PrintHeading(options.form, kCaseColumns);
    PrintGrowth(options.form, options.repetitions == 0 ? kTurns : options.repetitions);
    PrintRatioLine({"memory", "allocated for an event", AllocatedBytes(), static_cast<double>(EventFrame().size()),
                    "the event", "bytes"},
                   options.form, kCaseColumns);
    return 0;
}
