#include "csta/requests.h"

#include <initializer_list>
#include <string_view>

#include "csta/link.h"

namespace velmora {
namespace {

// The session is opened with editions 3 to 5, the calls are written in edition 6. Keep.
constexpr std::string_view kSessionNamespaces =
    R"( xmlns="http://www.ecma-international.org/standards/ecma-354/appl_session")"
    R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance")";
constexpr std::string_view kEdition3 = "http://www.ecma-international.org/standards/ecma-323/csta/ed3";
constexpr std::string_view kEdition4 = "http://www.ecma-international.org/standards/ecma-323/csta/ed4";
constexpr std::string_view kEdition5 = "http://www.ecma-international.org/standards/ecma-323/csta/ed5";
constexpr std::string_view kCallNamespace = R"( xmlns="http://www.ecma-international.org/standards/ecma-323/csta/ed6")";
constexpr std::string_view kLoginNamespace = R"( xmlns:tns="http://velmora.example/schemas/csta/login")";
constexpr std::string_view kRequestedSeconds = "1800";

// The text of one message, built line by line; every line ends with CR LF.
class MessageText {
public:
    MessageText() { text.reserve(kUsualBytes); }

    // A line of indent spaces and the pieces.
    void Line(size_t indent, std::initializer_list<std::string_view> pieces) {
        text.append(indent, ' ');
        for (const std::string_view piece : pieces) text += piece;
        text += "\r\n";
    }

    // A line with an element and its value, unescaped.
    void Element(size_t indent, std::string_view name, std::string_view value) {
        Line(indent, {"<", name, ">", value, "</", name, ">"});
    }

    uint32_t Send() const { return SendRequest(text); }

private:
    static constexpr size_t kUsualBytes = 1536;  // room for any message with values of usual lengths

    ByteString text;
};

MessageText SessionMessage(std::string_view root) {
    MessageText message;
    message.Line(0, {R"(<?xml version="1.0"?>)"});
    message.Line(0, {"<", root, kSessionNamespaces, ">"});
    return message;
}

MessageText CallMessage(std::string_view root) {
    MessageText message;
    message.Line(0, {R"(<?xml version="1.0" encoding="UTF-8"?>)"});
    message.Line(0, {"<", root, kCallNamespace, ">"});
    return message;
}

}  // namespace

void StartApplicationSession(const ByteString& domain, const ByteString& userName, const ByteString& password) {
    MessageText message = SessionMessage("StartApplicationSession");
    message.Line(1, {"<applicationInfo>"});
    message.Element(2, "applicationID", "Velmora TAPI service provider");
    message.Line(2, {"<applicationSpecificInfo>"});
    message.Line(3, {"<tns:SessionLoginInfo", kLoginNamespace, ">"});
    message.Element(4, "tns:userName", userName);
    message.Element(4, "tns:password", password);
    message.Element(4, "tns:domain", domain);
    message.Element(4, "tns:sessionCleanupDelay", "60");
    message.Line(3, {"</tns:SessionLoginInfo>"});
    message.Line(2, {"</applicationSpecificInfo>"});
    message.Line(1, {"</applicationInfo>"});
    message.Line(1, {"<requestedProtocolVersions>"});
    for (const std::string_view edition : {kEdition3, kEdition4, kEdition5}) {
        message.Element(2, "protocolVersion", edition);
    }
    message.Line(1, {"</requestedProtocolVersions>"});
    message.Element(1, "requestedSessionDuration", kRequestedSeconds);
    message.Line(0, {"</StartApplicationSession>"});
    message.Send();
}

void ResetApplicationSessionTimer(const ByteString& sessionId) {
    MessageText message = SessionMessage("ResetApplicationSessionTimer");
    message.Element(1, "sessionID", sessionId);
    message.Element(1, "requestedSessionDuration", kRequestedSeconds);
    message.Line(0, {"</ResetApplicationSessionTimer>"});
    message.Send();
}

uint32_t MakeCall(const ByteString& callingDevice, const ByteString& calledDirectoryNumber,
                  const ByteString& autoOriginate) {
    MessageText message = CallMessage("MakeCall");
    message.Element(0, "callingDevice", callingDevice);
    message.Element(0, "calledDirectoryNumber", calledDirectoryNumber);
    if (!autoOriginate.empty()) message.Element(0, "autoOriginate", autoOriginate);
    message.Line(0, {"</MakeCall>"});
    return message.Send();
}

void ClearConnection(const ByteString& callId, const ByteString& deviceId) {
    MessageText message = CallMessage("ClearConnection");
    message.Line(0, {"<connectionToBeCleared>"});
    message.Element(0, "callID", callId);
    message.Element(0, "deviceID", deviceId);
    message.Line(0, {"</connectionToBeCleared>"});
    message.Line(0, {"</ClearConnection>"});
    message.Send();
}

void MonitorStart(const ByteString& deviceObject) {
    MessageText message = CallMessage("MonitorStart");
    message.Line(0, {"<monitorObject>"});
    message.Element(0, "deviceObject", deviceObject);
    message.Line(0, {"</monitorObject>"});
    message.Element(0, "monitorType", "device");
    message.Line(0, {"<requestedMonitorMediaClass>"});
    message.Element(0, "voice", "true");
    message.Element(0, "im", "true");
    message.Line(0, {"</requestedMonitorMediaClass>"});
    message.Line(0, {"</MonitorStart>"});
    message.Send();
}

}  // namespace velmora
