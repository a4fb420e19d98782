#include "benchmarks/csta_messages.h"

#include <cstddef>

namespace velmora {
namespace {

const ByteString kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

CstaBundle Session() {
    const ByteString login =
        kDeclaration +
        "<StartApplicationSessionPosResponse xmlns=\"http://www.ecma-international.org/standards/ecma-354/"
        "appl_session\">\n"
        "  <sessionID>9f3c2a7e-55b1-4d0f-8e2a-000012345678</sessionID>\n"
        "  <actualProtocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed5"
        "</actualProtocolVersion>\n"
        "  <actualSessionDuration>1800</actualSessionDuration>\n"
        "</StartApplicationSessionPosResponse>\n";
    return {"session", {{login, {"sessionID", "actualSessionDuration"}}}};
}

CstaBundle Answers() {
    const ByteString renewed =
        "<ResetApplicationSessionTimerPosResponse xmlns=\"http://www.ecma-international.org/standards/ecma-354/"
        "appl_session\"><actualSessionDuration>1800</actualSessionDuration>"
        "</ResetApplicationSessionTimerPosResponse>";
    const ByteString monitored =
        kDeclaration +
        "<MonitorStartResponse xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
        "<monitorCrossRefID>4711</monitorCrossRefID><actualMonitorMediaClass><voice>true</voice>"
        "</actualMonitorMediaClass><monitorExistingCalls>true</monitorExistingCalls></MonitorStartResponse>";
    const ByteString made =
        kDeclaration +
        "<csta:MakeCallResponse xmlns:csta=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
        "<csta:callingDevice><csta:callID>17</csta:callID><csta:deviceID typeOfNumber=\"other\">anna@example.com"
        "</csta:deviceID></csta:callingDevice></csta:MakeCallResponse>";
    const ByteString madeOnManyLines =
        kDeclaration +
        "<MakeCallResponse xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">\n"
        "  <callingDevice>\n"
        "    <callID>00FA9C2B41D60003</callID>\n"
        "    <deviceID typeOfNumber=\"dialingNumber\">sip:anna&amp;bert@pbx.example.com;user=phone</deviceID>\n"
        "  </callingDevice>\n"
        "</MakeCallResponse>\n";
    const ByteString cleared =
        kDeclaration +
        "<ClearConnectionResponse xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\"/>";
    const ByteString refused = kDeclaration +
                               "<CSTAErrorCode xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
                               "<operation>invalidDestination</operation></CSTAErrorCode>";
    return {"answers",
            {
                {renewed, {"actualSessionDuration", "sessionID"}},
                {monitored, {"monitorCrossRefID", "actualMonitorMediaClass/voice"}},
                {made, {"callingDevice/callID", "callingDevice/deviceID"}},
                {madeOnManyLines, {"callingDevice/callID", "callingDevice/deviceID"}},
                {cleared, {"callingDevice/callID", "operation"}},
                {refused, {"operation", "callingDevice/callID"}},
            }};
}

CstaBundle Events() {
    const ByteString originated =
        kDeclaration +
        "<OriginatedEvent xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
        "<monitorCrossRefID>4711</monitorCrossRefID><originatedConnection><callID>18</callID><deviceID>anna@example.com"
        "</deviceID></originatedConnection><callingDevice><deviceIdentifier>sip:anna@example.com</deviceIdentifier>"
        "</callingDevice><calledDevice><deviceIdentifier>+4989123456</deviceIdentifier></calledDevice>"
        "<localConnectionInfo>connected</localConnectionInfo><cause>newCall</cause></OriginatedEvent>";
    const ByteString delivered =
        kDeclaration +
        "<DeliveredEvent xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\""
        " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
        "  <monitorCrossRefID>4711</monitorCrossRefID>\n"
        "  <connection>\n"
        "    <callID>18</callID>\n"
        "    <deviceID>bert@example.com</deviceID>\n"
        "  </connection>\n"
        "  <alertingDevice>\n"
        "    <deviceIdentifier typeOfNumber=\"other\">bert@example.com</deviceIdentifier>\n"
        "  </alertingDevice>\n"
        "  <callingDevice>\n"
        "    <deviceIdentifier typeOfNumber=\"other\">\"Anna M\xC3\xBCller\" &lt;sip:anna@example.com&gt;"
        "</deviceIdentifier>\n"
        "  </callingDevice>\n"
        "  <calledDevice>\n"
        "    <deviceIdentifier>+4989123456</deviceIdentifier>\n"
        "  </calledDevice>\n"
        "  <lastRedirectionDevice>\n"
        "    <notRequired/>\n"
        "  </lastRedirectionDevice>\n"
        "  <localConnectionInfo>alerting</localConnectionInfo>\n"
        "  <cause>newCall</cause>\n"
        "  <networkCallingDevice>\n"
        "    <notKnown/>\n"
        "  </networkCallingDevice>\n"
        "</DeliveredEvent>\n";
    const ByteString established =
        kDeclaration +
        "<csta:EstablishedEvent xmlns:csta=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
        "<csta:monitorCrossRefID>4711</csta:monitorCrossRefID><csta:establishedConnection><csta:callID>18"
        "</csta:callID><csta:deviceID>bert@example.com</csta:deviceID></csta:establishedConnection>"
        "<csta:answeringDevice><csta:deviceIdentifier>bert@example.com</csta:deviceIdentifier></csta:answeringDevice>"
        "<csta:callingDevice><csta:deviceIdentifier>anna@example.com</csta:deviceIdentifier></csta:callingDevice>"
        "<csta:calledDevice><csta:deviceIdentifier>+4989123456</csta:deviceIdentifier></csta:calledDevice>"
        "<csta:lastRedirectionDevice><csta:notRequired/></csta:lastRedirectionDevice><csta:originatingConnection>"
        "<csta:callID>18</csta:callID><csta:deviceID>anna@example.com</csta:deviceID></csta:originatingConnection>"
        "<csta:localConnectionInfo>connected</csta:localConnectionInfo><csta:cause>newCall</csta:cause>"
        "<csta:mediaCallCharacteristics><csta:mediaClass><csta:voice>true</csta:voice></csta:mediaClass>"
        "</csta:mediaCallCharacteristics></csta:EstablishedEvent>";
    const ByteString cleared =
        kDeclaration +
        "<ConnectionClearedEvent xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
        "<monitorCrossRefID>4711</monitorCrossRefID><droppedConnection><callID>18</callID><deviceID>bert@example.com"
        "</deviceID></droppedConnection><releasingDevice><deviceIdentifier>bert@example.com</deviceIdentifier>"
        "</releasingDevice><localConnectionInfo>null</localConnectionInfo><cause>normalClearing</cause>"
        "</ConnectionClearedEvent>";
    return {"events",
            {
                {originated, {"monitorCrossRefID", "originatedConnection/callID"}},
                {delivered, {"connection/callID", "callingDevice/deviceIdentifier"}},
                {established, {"establishedConnection/deviceID", "cause"}},
                {cleared, {"droppedConnection/callID", "cause"}},
            }};
}

// The device of one extension; its name is given in one of three ways, as the PBX's administrator typed it.
ByteString Device(int extension) {
    const ByteString number = std::to_string(extension);
    const ByteString names[] = {
        "M&#xFC;ller &amp; S&#246;hne &lt;Empfang " + number + "&gt;",
        "<![CDATA[Warehouse <" + number + "> & yard]]>",
        "Meeting room " + number,
    };
    return "<csta:device><csta:deviceID typeOfNumber=\"dialingNumber\" mediaClass='voice'>" + number +
           "</csta:deviceID><csta:deviceCategory>station</csta:deviceCategory><csta:deviceName>" +
           names[extension % 3] + "</csta:deviceName><ext:lineUse xmlns:ext='urn:example:pbx'>&quot;sip:" + number +
           "@pbx.example.com&quot;</ext:lineUse><csta:deviceOperationalState/></csta:device>\n";
}

CstaMessage DeviceList(size_t mostBytes) {
    ByteString xml = kDeclaration +
                     "<csta:SwitchingFunctionDevices xmlns:csta=\"http://www.ecma-international.org/standards/ecma-323/"
                     "csta/ed5\"><csta:serviceCrossRefID>31</csta:serviceCrossRefID><csta:deviceList>\n";
    const ByteString end =
        "</csta:deviceList><csta:lastSegment>true</csta:lastSegment></csta:SwitchingFunctionDevices>\n";
    for (int extension = 200;; ++extension) {
        const ByteString device = Device(extension);
        if (xml.size() + device.size() + end.size() > mostBytes) break;
        xml += device;
    }
    return {xml + end, {"deviceList/device/deviceName", "lastSegment"}};
}

CstaBundle Lists() {
    return {"lists", {DeviceList(4000), DeviceList(20000), DeviceList(60000)}};
}

}  // namespace

std::vector<CstaBundle> CstaBundles() {
    return {Session(), Answers(), Events(), Lists()};
}

}  // namespace velmora
