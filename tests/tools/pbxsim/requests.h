#pragma once

#include "config/byte_string.h"

namespace velmora::pbxsim {

// Requests as a provider sends them, shortened to what the PBX reads.

inline const ByteString kEcma354 = "http://www.ecma-international.org/standards/ecma-354/appl_session";
inline const ByteString kEdition5 = "http://www.ecma-international.org/standards/ecma-323/csta/ed5";
inline const ByteString kEdition6 = "http://www.ecma-international.org/standards/ecma-323/csta/ed6";

// A login that offers protocolVersions, a list of <protocolVersion> elements.
inline ByteString Login(const ByteString& user, const ByteString& password, const ByteString& domain,
                        const ByteString& protocolVersions) {
    return "<?xml version=\"1.0\"?>\r\n<StartApplicationSession xmlns=\"" + kEcma354 +
           "\">\r\n"
           " <applicationInfo>\r\n"
           "  <applicationID>Velmora TAPI service provider</applicationID>\r\n"
           "  <applicationSpecificInfo>\r\n"
           "   <tns:SessionLoginInfo xmlns:tns=\"http://www.example.com/schemas/csta/login\">\r\n"
           "    <tns:userName>" +
           user + "</tns:userName>\r\n    <tns:password>" + password + "</tns:password>\r\n    <tns:domain>" + domain +
           "</tns:domain>\r\n"
           "   </tns:SessionLoginInfo>\r\n"
           "  </applicationSpecificInfo>\r\n"
           " </applicationInfo>\r\n"
           " <requestedProtocolVersions>\r\n" +
           protocolVersions +
           " </requestedProtocolVersions>\r\n"
           " <requestedSessionDuration>1800</requestedSessionDuration>\r\n"
           "</StartApplicationSession>\r\n";
}

inline ByteString ProtocolVersion(int edition) {
    return "  <protocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed" + std::to_string(edition) +
           "</protocolVersion>\r\n";
}

// A login as the provider writes it: editions 3, 4 and 5.
inline ByteString Login(const ByteString& user = "40", const ByteString& password = "secret",
                        const ByteString& domain = "example.com") {
    return Login(user, password, domain, ProtocolVersion(3) + ProtocolVersion(4) + ProtocolVersion(5));
}

inline ByteString ResetTimer(const ByteString& sessionId) {
    return "<ResetApplicationSessionTimer xmlns=\"" + kEcma354 + "\"><sessionID>" + sessionId +
           "</sessionID><requestedSessionDuration>1800</requestedSessionDuration></ResetApplicationSessionTimer>";
}

inline ByteString MonitorStart(const ByteString& device) {
    return "<MonitorStart xmlns=\"" + kEdition6 + "\"><monitorObject><deviceObject>" + device +
           "</deviceObject></monitorObject><monitorType>device</monitorType></MonitorStart>";
}

inline ByteString MakeCall(const ByteString& from, const ByteString& to, const ByteString& autoOriginate = {}) {
    const ByteString option =
        autoOriginate.empty() ? ByteString() : "<autoOriginate>" + autoOriginate + "</autoOriginate>";
    return "<MakeCall xmlns=\"" + kEdition6 + "\"><callingDevice>" + from + "</callingDevice><calledDirectoryNumber>" +
           to + "</calledDirectoryNumber>" + option + "</MakeCall>";
}

inline ByteString ClearConnection(const ByteString& callId, const ByteString& device) {
    return "<ClearConnection xmlns=\"" + kEdition6 + "\"><connectionToBeCleared><callID>" + callId +
           "</callID><deviceID>" + device + "</deviceID></connectionToBeCleared></ClearConnection>";
}

}  // namespace velmora::pbxsim
