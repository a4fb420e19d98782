#pragma once

namespace velmora {

// Messages as a PBX sends them, with everything well-formed XML may have that a CSTA message might: declaration,
// comments, prefixes, attributes in both kinds of quotes, entities, CDATA, white space, empty elements.

inline constexpr char kSessionResponse[] =
    "<?xml version=\"1.0\"?>\n"
    "<StartApplicationSessionPosResponse xmlns=\"http://www.ecma-international.org/standards/ecma-354/appl_session\">\n"
    "  <sessionID>9f3c2a7e-55b1-4d0f-8e2a-000012345678</sessionID>\n"
    "  <actualProtocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed5</actualProtocolVersion>\n"
    "  <actualSessionDuration>1800</actualSessionDuration>\n"
    "</StartApplicationSessionPosResponse>\n";

inline constexpr char kMakeCallResponse[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<csta:MakeCallResponse xmlns:csta=\"http://www.ecma-international.org/standards/ecma-323/csta/ed6\">\n"
    "<csta:callingDevice><csta:callID>17</csta:callID><csta:deviceID typeOfNumber='other'>anna&amp;bert@example.com"
    "</csta:deviceID></csta:callingDevice></csta:MakeCallResponse>";

inline constexpr char kDeliveredEvent[] =
    "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!-- a call rings: <alerting/> & waits -->\n"
    "<DeliveredEvent xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed6\"\n"
    "                xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" >\n"
    "  <monitorCrossRefID>4711</monitorCrossRefID>\n"
    "  <connection><callID>18</callID><deviceID>sip:200@pbx.example.com</deviceID></connection>\n"
    "  <callingDevice><deviceIdentifier>M\xC3\xBCller &lt;0&#x37;&#48;&gt; &#x20AC;&#128222;</deviceIdentifier>"
    "</callingDevice>\n"
    "  <calledDevice><?route 1 > 2 ?><notKnown/></calledDevice><networkCalledDevice><notRequired "
    "/></networkCalledDevice\n>"
    "  <extensions><privateData note=\"a>b &quot;c&quot;\" other='\"'><![CDATA[<raw>&amp;]] ></raw>]]> and "
    "<!-- - -->more</privateData></extensions>\n"
    "  <cause>newCall</cause>\n"
    "</DeliveredEvent>\n"
    "<!-- end -->\n";

inline constexpr const char* kSampleMessages[] = {kSessionResponse, kMakeCallResponse, kDeliveredEvent};

}  // namespace velmora
