#include "csta/requests.h"

#include <gtest/gtest.h>

#include "tests/support/recorded_link.h"

namespace velmora {
namespace {

// The expected texts stand here line by line as the PBX gets them; every line ends with CR LF.
ByteString Lines(std::initializer_list<const char*> lines) {
    ByteString text;
    for (const char* line : lines) text += ByteString(line) + "\r\n";
    return text;
}

class Requests : public testing::Test {
protected:
    Requests() { recordedLink = {}; }
};

TEST_F(Requests, StartApplicationSessionLogsInAndOffersEditions3To5) {
    StartApplicationSession("example.com", "40", "secret");
    ASSERT_EQ(recordedLink.sent.size(), 1U);
    EXPECT_EQ(
        recordedLink.sent[0],
        Lines({
            R"(<?xml version="1.0"?>)",
            R"(<StartApplicationSession xmlns="http://www.ecma-international.org/standards/ecma-354/appl_session")"
            R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">)",
            " <applicationInfo>",
            "  <applicationID>Velmora TAPI service provider</applicationID>",
            "  <applicationSpecificInfo>",
            R"(   <tns:SessionLoginInfo xmlns:tns="http://velmora.example/schemas/csta/login">)",
            "    <tns:userName>40</tns:userName>",
            "    <tns:password>secret</tns:password>",
            "    <tns:domain>example.com</tns:domain>",
            "    <tns:sessionCleanupDelay>60</tns:sessionCleanupDelay>",
            "   </tns:SessionLoginInfo>",
            "  </applicationSpecificInfo>",
            " </applicationInfo>",
            " <requestedProtocolVersions>",
            "  <protocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed3</protocolVersion>",
            "  <protocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed4</protocolVersion>",
            "  <protocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed5</protocolVersion>",
            " </requestedProtocolVersions>",
            " <requestedSessionDuration>1800</requestedSessionDuration>",
            "</StartApplicationSession>",
        }));
}

TEST_F(Requests, ResetApplicationSessionTimerNamesTheSession) {
    ResetApplicationSessionTimer("session 7");
    ASSERT_EQ(recordedLink.sent.size(), 1U);
    EXPECT_EQ(
        recordedLink.sent[0],
        Lines({
            R"(<?xml version="1.0"?>)",
            R"(<ResetApplicationSessionTimer xmlns="http://www.ecma-international.org/standards/ecma-354/appl_session")"
            R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">)",
            " <sessionID>session 7</sessionID>",
            " <requestedSessionDuration>1800</requestedSessionDuration>",
            "</ResetApplicationSessionTimer>",
        }));
}

TEST_F(Requests, MakeCallNamesBothDevicesInEdition6) {
    MakeCall("40@example.com", "49301234", "doNotPrompt");
    ASSERT_EQ(recordedLink.sent.size(), 1U);
    EXPECT_EQ(recordedLink.sent[0],
              Lines({
                  R"(<?xml version="1.0" encoding="UTF-8"?>)",
                  R"(<MakeCall xmlns="http://www.ecma-international.org/standards/ecma-323/csta/ed6">)",
                  "<callingDevice>40@example.com</callingDevice>",
                  "<calledDirectoryNumber>49301234</calledDirectoryNumber>",
                  "<autoOriginate>doNotPrompt</autoOriginate>",
                  "</MakeCall>",
              }));
}

TEST_F(Requests, MakeCallLeavesAnEmptyAutoOriginateOut) {
    MakeCall("40@example.com", "", "");
    ASSERT_EQ(recordedLink.sent.size(), 1U);
    EXPECT_EQ(recordedLink.sent[0],
              Lines({
                  R"(<?xml version="1.0" encoding="UTF-8"?>)",
                  R"(<MakeCall xmlns="http://www.ecma-international.org/standards/ecma-323/csta/ed6">)",
                  "<callingDevice>40@example.com</callingDevice>",
                  "<calledDirectoryNumber></calledDirectoryNumber>",
                  "</MakeCall>",
              }));
}

TEST_F(Requests, ClearConnectionNamesTheCallAsThePbxDoes) {
    ClearConnection("7", "40@example.com");
    ASSERT_EQ(recordedLink.sent.size(), 1U);
    EXPECT_EQ(recordedLink.sent[0],
              Lines({
                  R"(<?xml version="1.0" encoding="UTF-8"?>)",
                  R"(<ClearConnection xmlns="http://www.ecma-international.org/standards/ecma-323/csta/ed6">)",
                  "<connectionToBeCleared>",
                  "<callID>7</callID>",
                  "<deviceID>40@example.com</deviceID>",
                  "</connectionToBeCleared>",
                  "</ClearConnection>",
              }));
}

TEST_F(Requests, MonitorStartAsksForVoiceAndMessages) {
    MonitorStart("40@example.com");
    ASSERT_EQ(recordedLink.sent.size(), 1U);
    EXPECT_EQ(recordedLink.sent[0],
              Lines({
                  R"(<?xml version="1.0" encoding="UTF-8"?>)",
                  R"(<MonitorStart xmlns="http://www.ecma-international.org/standards/ecma-323/csta/ed6">)",
                  "<monitorObject>",
                  "<deviceObject>40@example.com</deviceObject>",
                  "</monitorObject>",
                  "<monitorType>device</monitorType>",
                  "<requestedMonitorMediaClass>",
                  "<voice>true</voice>",
                  "<im>true</im>",
                  "</requestedMonitorMediaClass>",
                  "</MonitorStart>",
              }));
}

TEST_F(Requests, MakeCallReturnsTheInvokeIdItWasSentUnder) {
    recordedLink.nextInvokeId = 41;
    EXPECT_EQ(MakeCall("a", "1", ""), 41U);
    EXPECT_EQ(MakeCall("a", "2", ""), 42U);
}

TEST_F(Requests, SendValuesUnescaped) {
    StartApplicationSession("d", "u", R"(p&q<"'>)");
    EXPECT_NE(recordedLink.sent[0].find(R"(<tns:password>p&q<"'></tns:password>)"), ByteString::npos);
}

}  // namespace
}  // namespace velmora
