#pragma once

#include <vector>

#include "config/byte_string.h"
#include "xml/xml_node.h"

namespace velmora::ctl {

// What the provider has asked of the PBX in this run and what the PBX has answered, learned from the CSTA messages that
// pass by.
//
// The trace log shows the messages without their invoke IDs. A response is therefore matched by its name, and an error
// that names no request by the order of requests: a PBX answers them one after the other.

struct PbxRequest {
    enum class State { kNotSent, kSent, kGranted, kRefused };

    State state = State::kNotSent;
    ByteString reason;  // of a refusal: the fields of the PBX's answer; may be empty

    bool Granted() const { return state == State::kGranted; }
    bool Refused() const { return state == State::kRefused; }
    bool Settled() const { return Granted() || Refused(); }
};

class PbxExchange {
public:
    PbxExchange() = default;
    PbxExchange(const PbxExchange&) = delete;
    PbxExchange& operator=(const PbxExchange&) = delete;

    // Takes the next message, sent by the provider or received by it. Events and answers to nothing change nothing.
    void Observe(bool sent, const XmlNode& message);

    PbxRequest login;    // StartApplicationSession
    PbxRequest monitor;  // MonitorStart
    PbxRequest call;     // MakeCall
    PbxRequest clear;    // ClearConnection
    PbxRequest reset;    // ResetApplicationSessionTimer, the last one

    ByteString sessionId;        // from the answer to the login
    ByteString sessionDuration;  // in seconds, as the PBX wrote it
    ByteString dialledNumber;    // as sent to the PBX
    ByteString callId;           // from the answer to the call; with deviceId it names the call at the PBX
    ByteString deviceId;

private:
    struct Name;
    static const Name kNames[];

    void ObserveSent(const XmlNode& message);
    void ObserveReceived(const XmlNode& message);
    void Grant(PbxRequest& request, const XmlNode& message);
    void Refuse(PbxRequest& request, const XmlNode& message);
    void Settle(const PbxRequest& request);  // takes it off the waiting list

    std::vector<PbxRequest*> waiting;  // requests without an answer, oldest first
};

}  // namespace velmora::ctl
