#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "config/byte_string.h"
#include "xml/xml_node.h"

namespace velmora::ctl {

struct RequestNames;

// All calls in a trace log, each with what became of it, learned from the CSTA messages as they pass by.
//
// An answer belongs to the oldest request of its kind that has none yet, an error that names no request to the oldest
// of all. A login begins a new link to the PBX: what was not answered before it never will be.

struct LoggedCall {
    uint64_t askedMs = 0;  // on the log's own time, as are the other two
    ByteString from;       // the device that calls
    ByteString number;     // as sent to the PBX
    std::optional<uint64_t> answeredMs;
    bool refused = false;
    ByteString reason;  // of a refusal
    ByteString callId;  // with deviceId it names the call at the PBX
    ByteString deviceId;
    std::optional<uint64_t> clearedMs;  // the PBX has confirmed it
};

// What a message answers.
struct AnsweredRequest {
    std::string_view name;
    uint64_t askedMs = 0;
};

class CallHistory {
public:
    // Takes the next message, sent by the provider or received by it. Gives the request that it answers, if any.
    std::optional<AnsweredRequest> Observe(bool sent, const XmlNode& message, uint64_t atMs);

    const std::vector<LoggedCall>& Calls() const { return calls; }

private:
    struct Pending {
        const RequestNames* names;
        uint64_t askedMs;
        std::optional<size_t> call;  // that it places or clears: its place among the calls
    };

    void ObserveSent(const XmlNode& message, uint64_t atMs);
    std::optional<size_t> CallOf(const XmlNode& clearing) const;
    void Answer(const Pending& pending, const XmlNode& message, bool granted, uint64_t atMs);

    std::vector<Pending> waiting;  // requests without an answer, oldest first
    std::vector<LoggedCall> calls;
};

}  // namespace velmora::ctl
