#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "config/byte_string.h"
#include "tools/pbxsim/messages.h"
#include "xml/xml_node.h"

namespace velmora::pbxsim {

// What the PBX answers, without sockets and without a clock: messages in, messages out, and the caller says how late
// it is, in milliseconds on any clock that only goes forward.

// How the PBX behaves.
struct Behaviour {
    ByteString user;                // what a login must give; empty: anything will do
    ByteString password;            // likewise
    ByteString domain;              // likewise
    bool rejectLogin = false;       // refuse every login
    int32_t sessionSeconds = 1800;  // granted to every session, whatever it asks for; 0: its time never runs out
    int32_t answerDelayMs = 0;      // between a request and its answer
    bool errorOnMakeCall = false;   // answer every MakeCall with an error
    bool events = false;            // report the progress of each call to the monitors of the calling device
    bool silent = false;            // never answer
};

// What all clients share: the behaviour, and identifiers that are given out once.
struct Pbx {
    Behaviour behaviour;
    uint32_t nextSession = 1;
    uint32_t nextMonitor = 1;
    uint32_t nextCall = 1;
};

// A message on its way to a client.
struct Message {
    uint32_t invokeId = 0;  // that of the request which it answers; kEventInvokeId when it answers none
    ByteString xml;
    ByteString remark;  // why, for people; empty when the message speaks for itself
};

inline constexpr uint32_t kEventInvokeId = 9999;

// With events on, a call takes its next step (dialled, ringing, answered) this long after the one before.
inline constexpr uint64_t kCallStepMs = 500;

// One client: its login, its monitors, its calls, and what is yet to be sent to it. A client has one application
// session at a time (ECMA-354); its second login replaces the first, with monitors and calls.
class ClientSession {
public:
    explicit ClientSession(Pbx& sharedPbx) : pbx(sharedPbx) {}

    // Takes a request. A root without a name, or with one that the PBX does not know, is answered with an error.
    void Receive(uint32_t invokeId, const XmlNode& request, uint64_t nowMs);

    // The messages that are to be sent by now, in their order.
    std::vector<Message> TakeDue(uint64_t nowMs);

    // When TakeDue has something next; none when nothing waits.
    std::optional<uint64_t> NextDueMs() const;

    // The PBX has ended the session because its time ran out; the last message taken tells the client. Nothing follows.
    bool Ended() const { return ended; }

private:
    struct Request {
        uint32_t invokeId;
        const XmlNode& xml;
        uint64_t answerMs;  // when the answer leaves
    };
    struct Monitor {
        ByteString crossRefId;
        ByteString device;
    };
    struct Pending {
        uint64_t dueMs;
        Message message;
        ByteString eventOfCall;  // its call ID when the message is an event; else empty
    };

    void StartSession(const Request& request);
    void ResetTimer(const Request& request);
    void StartMonitor(const Request& request);
    void MakeCall(const Request& request);
    void ClearConnection(const Request& request);

    void Answer(const Request& request, const ByteString& xml, const ByteString& remark = {});
    void AnswerError(const Request& request, const ByteString& operation, const ByteString& remark);
    void SendEvent(uint64_t dueMs, const Call& call, EventBuilder event);
    void Enqueue(const Pending& pending);
    void RenewUntil(uint64_t answerMs);
    bool Expired(uint64_t nowMs) const;

    Pbx& pbx;
    ByteString sessionId;                // empty before the login
    ByteString cstaNamespace;            // of the edition agreed on at the login
    std::optional<uint64_t> deadlineMs;  // when the session's time runs out; none: never
    std::vector<Monitor> monitors;
    std::vector<Call> calls;
    std::vector<Pending> queue;  // by dueMs, equal ones in the order in which they came
    bool ended = false;
};

}  // namespace velmora::pbxsim
