#include "tools/velmoractl/pbx_exchange.h"

#include <algorithm>

#include "tools/velmoractl/csta_summary.h"
#include "tools/velmoractl/request_names.h"

namespace velmora::ctl {

struct PbxExchange::Name {
    const RequestNames& names;
    PbxRequest PbxExchange::*member;
};

const PbxExchange::Name PbxExchange::kNames[] = {
    {kLoginNames, &PbxExchange::login}, {kResetNames, &PbxExchange::reset}, {kMonitorNames, &PbxExchange::monitor},
    {kCallNames, &PbxExchange::call},   {kClearNames, &PbxExchange::clear},
};

void PbxExchange::Observe(bool sent, const XmlNode& message) {
    if (sent) {
        ObserveSent(message);
    } else {
        ObserveReceived(message);
    }
}

void PbxExchange::ObserveSent(const XmlNode& message) {
    for (const Name& name : kNames) {
        if (message.localName != name.names.request) continue;
        PbxRequest& request = this->*name.member;
        Settle(request);
        request = {PbxRequest::State::kSent, {}};
        waiting.push_back(&request);
        if (&request == &call) dialledNumber = message.textAt("calledDirectoryNumber");
    }
}

void PbxExchange::ObserveReceived(const XmlNode& message) {
    if (message.localName.empty()) return;
    for (const Name& name : kNames) {
        PbxRequest& request = this->*name.member;
        if (request.state != PbxRequest::State::kSent) continue;
        if (message.localName == name.names.granted) return Grant(request, message);
        if (message.localName == name.names.refused) return Refuse(request, message);
    }
    if (message.localName == kCstaError && !waiting.empty()) Refuse(*waiting.front(), message);
}

void PbxExchange::Grant(PbxRequest& request, const XmlNode& message) {
    request.state = PbxRequest::State::kGranted;
    Settle(request);
    if (&request == &login) {
        sessionId = message.textAt("sessionID");
        sessionDuration = message.textAt("actualSessionDuration");
    }
    if (&request == &call) {
        callId = message.textAt("callingDevice/callID");
        deviceId = message.textAt("callingDevice/deviceID");
    }
}

void PbxExchange::Refuse(PbxRequest& request, const XmlNode& message) {
    request = {PbxRequest::State::kRefused, SummariseFields(message)};
    Settle(request);
}

void PbxExchange::Settle(const PbxRequest& request) {
    std::erase(waiting, &request);
}

}  // namespace velmora::ctl
