#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

const std::string kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";
const std::string kSessionNamespace = R"( xmlns="http://www.ecma-international.org/standards/ecma-354/appl_session")";
const std::string kCallNamespace = R"( xmlns="http://www.ecma-international.org/standards/ecma-323/csta/ed5")";

}  // namespace

std::string SessionAccepted(const std::string& sessionId, const std::string& duration) {
    return kDeclaration + "<StartApplicationSessionPosResponse" + kSessionNamespace + "><sessionID>" + sessionId +
           "</sessionID><actualProtocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed5"
           "</actualProtocolVersion><actualSessionDuration>" +
           duration + "</actualSessionDuration></StartApplicationSessionPosResponse>";
}

std::string SessionTimerReset(const std::string& duration) {
    return kDeclaration + "<ResetApplicationSessionTimerPosResponse" + kSessionNamespace + "><actualSessionDuration>" +
           duration + "</actualSessionDuration></ResetApplicationSessionTimerPosResponse>";
}

std::string CallMade(const std::string& callId, const std::string& deviceId) {
    return kDeclaration + "<MakeCallResponse" + kCallNamespace + "><callingDevice><callID>" + callId +
           "</callID><deviceID>" + deviceId + "</deviceID></callingDevice></MakeCallResponse>";
}

std::string RequestRefused() {
    return kDeclaration + "<CSTAErrorCode" + kCallNamespace +
           "><operation>invalidCalledDeviceID</operation></CSTAErrorCode>";
}

std::string CallDelivered(const std::string& callId) {
    return kDeclaration + "<DeliveredEvent" + kCallNamespace +
           "><monitorCrossRefID>1</monitorCrossRefID><connection><callID>" + callId +
           "</callID><deviceID>41</deviceID></connection><localConnectionInfo>alerting</localConnectionInfo>"
           "<cause>newCall</cause></DeliveredEvent>";
}

}  // namespace velmora
