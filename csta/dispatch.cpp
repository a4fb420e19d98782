#include "csta/dispatch.h"

#include "config/settings.h"
#include "config/text_numbers.h"
#include "csta/link.h"
#include "csta/requests.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

int32_t GrantedSeconds(const XmlNode& answer) {
    return ParseInt(answer.textAt("actualSessionDuration"));
}

void SessionStarted(const XmlNode& answer) {
    const int32_t seconds = GrantedSeconds(answer);
    if (seconds <= 0) return;
    ArmKeepalive(answer.textAt("sessionID"), seconds);
    MonitorStart(settings.username + "@" + settings.domain);
}

void SessionRenewed(const XmlNode& answer) {
    const int32_t seconds = GrantedSeconds(answer);
    if (seconds > 0) ArmKeepalive({}, seconds);
}

}  // namespace

void Dispatch(uint32_t invokeId, std::string_view xml, BindCallFunction bindCall) {
    const XmlNode root(xml, true);
    if (root.localName == "StartApplicationSessionPosResponse") {
        SessionStarted(root);
    } else if (root.localName == "ResetApplicationSessionTimerPosResponse") {
        SessionRenewed(root);
    } else if (root.localName == "MakeCallResponse") {
        bindCall(invokeId, root.textAt("callingDevice/callID"), root.textAt("callingDevice/deviceID"));
    }
    // ClearConnectionResponse, CSTAErrorCode and every event are known and wanted to change nothing.
}

}  // namespace velmora
