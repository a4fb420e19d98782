#include "benchmarks/job/rehearsal.h"

#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "benchmarks/job/floor_script.h"
#include "benchmarks/job/messages.h"
#include "benchmarks/job/precise_clock.h"
#include "tls/tls_connection.h"

namespace velmora {
namespace {

// The script with the bytes of its pieces.
struct ScriptFile {
    FloorScript script = {};
    ByteString pieces;

    FloorPiece Add(const ByteString& bytes) {
        const FloorPiece piece = {static_cast<uint32_t>(sizeof(FloorScript) + pieces.size()),
                                  static_cast<uint32_t>(bytes.size())};
        pieces += bytes;
        return piece;
    }

    ByteString Bytes() const { return ByteString(reinterpret_cast<const char*>(&script), sizeof script) + pieces; }
};

// As the provider's records reach the disk, through a file in text mode.
ByteString LogRecord(const ByteString& text) {
    ByteString record;
    for (const char character : "[0:00:00:000]:5 " + text + "\r\n") {
        if (character == '\n') record += '\r';
        record += character;
    }
    return record;
}

// What the entry point that sends a request has logged before; empty for one that no entry point sends.
ByteString EntryPointText(const ByteString& xml) {
    const ByteString startTag = "<calledDirectoryNumber>";
    if (const size_t tag = xml.find(startTag); tag != ByteString::npos) {
        const size_t start = tag + startTag.size();
        return "TSPI_lineMakeCall to " + xml.substr(start, xml.find('<', start) - start) + " CountryCode = 0";
    }
    return xml.find("<ClearConnection") == ByteString::npos ? "" : "TSPI_lineCloseCall";
}

// What a side of the link does to a frame before it is sent, and what that costs the other side.
struct Wrapping {
    std::function<ByteString(const ByteString& frame)> request;
    std::function<ByteString(const ByteString& frame)> message;
    TlsCosts costs;
};

void AddRequests(ScriptFile& file, const std::vector<Request>& requests, const Wrapping& wrapping) {
    const double ticksPerNs = TicksPerNs();
    if (requests.size() > std::size(file.script.requests)) throw std::runtime_error("too many requests for the floor");
    for (const Request& request : requests) {
        FloorRequest& entry = file.script.requests[file.script.requestCount++];
        const ByteString frame = EncodeFrame(request.invokeId, request.xml);
        entry.wire = file.Add(wrapping.request(frame));
        if (const ByteString text = EntryPointText(request.xml); !text.empty()) {
            entry.records[0] = file.Add(LogRecord(text));
        }
        entry.records[1] = file.Add(LogRecord("CSTA Tx: " + request.xml));
        entry.spinTicks = static_cast<uint64_t>(ticksPerNs * wrapping.costs.ProtectNs(frame.size()));
    }
    for (const ByteString& frame : {SessionAcceptedFrame(), CallMadeFrame(0), EventFrame()}) {
        FloorMessage& entry = file.script.messages[file.script.messageCount++];
        entry.wireBytes = static_cast<uint32_t>(wrapping.message(frame).size());
        entry.isAnswered = frame == SessionAcceptedFrame() ? 1 : 0;
        entry.record = file.Add(LogRecord("CSTA Rx: " + frame.substr(kFrameHeaderBytes)));
        entry.spinTicks = static_cast<uint64_t>(ticksPerNs * wrapping.costs.UnprotectNs(frame.size()));
    }
}

}  // namespace

ByteString ScriptInTheClear(const std::vector<Request>& requests) {
    const auto asItIs = [](const ByteString& frame) { return frame; };
    ScriptFile file;
    file.script.headerBytes = kFrameHeaderBytes;
    file.script.lengthPosition = 2;
    file.script.lengthCountsHeader = 1;
    AddRequests(file, requests, {asItIs, asItIs, {}});
    return file.Bytes();
}

ByteString EncryptedScript(const std::vector<Request>& requests, const ByteString& domain, const TlsCosts& costs) {
    TlsConnection client;
    TlsConnection server;
    client.SetExpectedDomain(domain);
    client.verifyCertificates = false;
    client.StartClientHandshake();

    ScriptFile file;
    file.script.headerBytes = kRecordHeaderBytes;
    file.script.lengthPosition = 3;
    for (size_t flight = 0; flight < 2; ++flight) {
        const ByteString fromClient = client.Send({});
        file.script.clientFlights[flight].wire = file.Add(fromClient);
        server.Feed(fromClient);
        const ByteString fromServer = server.Send({});
        file.script.serverFlightBytes[flight] = static_cast<uint32_t>(fromServer.size());
        client.Feed(fromServer);
    }
    if (!client.HandshakeComplete() || client.Suite() != kRsaWithAes128Sha) {
        throw std::runtime_error("the rehearsed handshake has come to another end");
    }
    file.script.clientFlights[1].spinTicks = static_cast<uint64_t>(TicksPerNs() * costs.handshakeNs);
    AddRequests(file, requests,
                {[&](const ByteString& frame) { return client.Send(frame); },
                 [&](const ByteString& frame) { return server.Send(frame); }, costs});
    return file.Bytes();
}

}  // namespace velmora
