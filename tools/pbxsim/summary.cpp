#include "tools/pbxsim/summary.h"

namespace velmora::pbxsim {
namespace {

constexpr size_t kMaxWordBytes = 60;

struct Part {
    const char* message;
    const char* before;  // what is said before the value
    const char* path;
    const char* after;
};

constexpr Part kParts[] = {
    {"StartApplicationSession", "user ", "applicationInfo/applicationSpecificInfo/SessionLoginInfo/userName", ""},
    {"StartApplicationSession", "domain ", "applicationInfo/applicationSpecificInfo/SessionLoginInfo/domain", ""},
    {"StartApplicationSessionPosResponse", "session ", "sessionID", ""},
    {"StartApplicationSessionPosResponse", "for ", "actualSessionDuration", " s"},
    {"StartApplicationSessionNegResponse", "", "errorCode/definedError", ""},
    {"ResetApplicationSessionTimer", "session ", "sessionID", ""},
    {"ResetApplicationSessionTimerPosResponse", "for ", "actualSessionDuration", " s"},
    {"ResetApplicationSessionTimerNegResponse", "", "errorCode/definedError", ""},
    {"ApplicationSessionTerminated", "session ", "sessionID", ""},
    {"MonitorStart", "device ", "monitorObject/deviceObject", ""},
    {"MonitorStartResponse", "monitor ", "monitorCrossRefID", ""},
    {"MakeCall", "from ", "callingDevice", ""},
    {"MakeCall", "to ", "calledDirectoryNumber", ""},
    {"MakeCall", "autoOriginate ", "autoOriginate", ""},
    {"MakeCallResponse", "call ", "callingDevice/callID", ""},
    {"MakeCallResponse", "device ", "callingDevice/deviceID", ""},
    {"ClearConnection", "call ", "connectionToBeCleared/callID", ""},
    {"ClearConnection", "device ", "connectionToBeCleared/deviceID", ""},
    {"CSTAErrorCode", "", "operation", ""},
    {"ServiceInitiatedEvent", "call ", "initiatedConnection/callID", ""},
    {"OriginatedEvent", "call ", "originatedConnection/callID", ""},
    {"OriginatedEvent", "to ", "calledDevice/deviceIdentifier", ""},
    {"DeliveredEvent", "call ", "connection/callID", ""},
    {"DeliveredEvent", "rings at ", "alertingDevice/deviceIdentifier", ""},
    {"EstablishedEvent", "call ", "establishedConnection/callID", ""},
    {"EstablishedEvent", "answered by ", "answeringDevice/deviceIdentifier", ""},
    {"ConnectionClearedEvent", "call ", "droppedConnection/callID", ""},
};

}  // namespace

ByteString Summary(const XmlNode& message) {
    ByteString summary;
    for (const Part& part : kParts) {
        if (message.localName != part.message) continue;
        const ByteString value = message.textAt(part.path);
        if (value.empty()) continue;
        if (!summary.empty()) summary += ", ";
        summary += part.before + OneLine(value) + part.after;
    }
    return summary;
}

ByteString MessageName(const XmlNode& message) {
    return message.localName.empty() ? "(no XML)" : OneLine(message.localName);
}

ByteString OneLine(const ByteString& text) {
    ByteString line = text.substr(0, kMaxWordBytes);
    for (char& character : line) {
        if ((character >= 0 && character < ' ') || character == '\x7F') character = '?';
    }
    if (text.size() > kMaxWordBytes) line += "...";
    return line;
}

}  // namespace velmora::pbxsim
