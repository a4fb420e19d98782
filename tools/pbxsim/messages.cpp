#include "tools/pbxsim/messages.h"

#include "config/text_numbers.h"

namespace velmora::pbxsim {
namespace {

constexpr char kSessionNamespace[] = "http://www.ecma-international.org/standards/ecma-354/appl_session";

ByteString Element(const ByteString& name, const ByteString& content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

ByteString TextElement(const ByteString& name, const ByteString& text) {
    return Element(name, EscapeXml(text));
}

ByteString Document(const ByteString& name, const ByteString& xmlNamespace, const ByteString& content) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>)"
           "<" +
           name + " xmlns=\"" + EscapeXml(xmlNamespace) + "\">" + content + "</" + name + ">";
}

ByteString DefinedError(const ByteString& error) {
    return Element("errorCode", TextElement("definedError", error));
}

// A ConnectionID: the call as device takes part in it.
ByteString Connection(const ByteString& name, const Call& call, const ByteString& device) {
    return Element(name, TextElement("callID", call.callId) + TextElement("deviceID", device));
}

// A device as a party of the call.
ByteString Device(const ByteString& name, const ByteString& device) {
    return Element(name, TextElement("deviceIdentifier", device));
}

ByteString CallParties(const Call& call) {
    return Device("callingDevice", call.callingDevice) + Device("calledDevice", call.calledDevice);
}

// The end of every event: the state of the monitored connection, and why.
ByteString StateAndCause(const ByteString& state, const ByteString& cause) {
    return TextElement("localConnectionInfo", state) + TextElement("cause", cause);
}

ByteString Event(const ByteString& name, const ByteString& cstaNamespace, const ByteString& crossRefId,
                 const ByteString& content) {
    return Document(name, cstaNamespace, TextElement("monitorCrossRefID", crossRefId) + content);
}

}  // namespace

ByteString EscapeXml(const ByteString& text) {
    ByteString escaped;
    for (const char character : text) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&apos;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

ByteString StartApplicationSessionPosResponse(const ByteString& sessionId, const ByteString& protocolVersion,
                                              int32_t seconds) {
    return Document("StartApplicationSessionPosResponse", kSessionNamespace,
                    TextElement("sessionID", sessionId) + TextElement("actualProtocolVersion", protocolVersion) +
                        TextElement("actualSessionDuration", DecimalText(seconds)));
}

ByteString StartApplicationSessionNegResponse(const ByteString& error) {
    return Document("StartApplicationSessionNegResponse", kSessionNamespace, DefinedError(error));
}

ByteString ResetApplicationSessionTimerPosResponse(int32_t seconds) {
    return Document("ResetApplicationSessionTimerPosResponse", kSessionNamespace,
                    TextElement("actualSessionDuration", DecimalText(seconds)));
}

ByteString ResetApplicationSessionTimerNegResponse(const ByteString& error) {
    return Document("ResetApplicationSessionTimerNegResponse", kSessionNamespace, DefinedError(error));
}

ByteString ApplicationSessionTerminated(const ByteString& sessionId, const ByteString& reason) {
    return Document(
        "ApplicationSessionTerminated", kSessionNamespace,
        TextElement("sessionID", sessionId) + Element("sessionTermReason", TextElement("definedTermReason", reason)));
}

ByteString CstaNamespace(int edition) {
    return "http://www.ecma-international.org/standards/ecma-323/csta/ed" + DecimalText(edition);
}

ByteString MonitorStartResponse(const ByteString& cstaNamespace, const ByteString& crossRefId) {
    return Document("MonitorStartResponse", cstaNamespace, TextElement("monitorCrossRefID", crossRefId));
}

ByteString MakeCallResponse(const ByteString& cstaNamespace, const Call& call) {
    return Document("MakeCallResponse", cstaNamespace, Connection("callingDevice", call, call.callingDevice));
}

ByteString ClearConnectionResponse(const ByteString& cstaNamespace) {
    return Document("ClearConnectionResponse", cstaNamespace, "");
}

ByteString CstaErrorCode(const ByteString& cstaNamespace, const ByteString& operation) {
    return Document("CSTAErrorCode", cstaNamespace, TextElement("operation", operation));
}

ByteString ServiceInitiatedEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call) {
    return Event("ServiceInitiatedEvent", cstaNamespace, crossRefId,
                 Connection("initiatedConnection", call, call.callingDevice) +
                     Device("initiatingDevice", call.callingDevice) + StateAndCause("initiated", "makeCall"));
}

ByteString OriginatedEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call) {
    return Event("OriginatedEvent", cstaNamespace, crossRefId,
                 Connection("originatedConnection", call, call.callingDevice) + CallParties(call) +
                     StateAndCause("connected", "newCall"));
}

ByteString DeliveredEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call) {
    return Event("DeliveredEvent", cstaNamespace, crossRefId,
                 Connection("connection", call, call.calledDevice) + Device("alertingDevice", call.calledDevice) +
                     CallParties(call) + Element("lastRedirectionDevice", "<notRequired/>") +
                     StateAndCause("connected", "newCall"));
}

ByteString EstablishedEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call) {
    return Event("EstablishedEvent", cstaNamespace, crossRefId,
                 Connection("establishedConnection", call, call.calledDevice) +
                     Device("answeringDevice", call.calledDevice) + CallParties(call) +
                     Element("lastRedirectionDevice", "<notRequired/>") + StateAndCause("connected", "newCall"));
}

ByteString ConnectionClearedEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call) {
    return Event("ConnectionClearedEvent", cstaNamespace, crossRefId,
                 Connection("droppedConnection", call, call.callingDevice) +
                     Device("releasingDevice", call.callingDevice) + StateAndCause("null", "normalClearing"));
}

}  // namespace velmora::pbxsim
