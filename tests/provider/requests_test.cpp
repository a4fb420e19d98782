#include "tests/provider/provider_test.h"
#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

// The requests byte by byte. Their namespaces are those of the standards: ECMA-354 for the application session,
// ECMA-323 in the editions 3 to 6 for calls, W3C for the XML Schema instance.

// The PBX's login schema: a name of our own, of which only the path is fixed. Taken from a StartApplicationSession.
std::string LoginSchema(const std::string& xml) {
    const std::string before = "<tns:SessionLoginInfo xmlns:tns=\"";
    const size_t start = xml.find(before);
    if (start == std::string::npos) return "no login schema";
    const size_t end = xml.find('"', start + before.size());
    return xml.substr(start + before.size(), end - start - before.size());
}

std::string StartApplicationSession(const std::string& schema, const std::string& username, const std::string& password,
                                    const std::string& domain) {
    return "<?xml version=\"1.0\"?>\r\n"
           "<StartApplicationSession xmlns=\"http://www.ecma-international.org/standards/ecma-354/appl_session\""
           " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\r\n"
           " <applicationInfo>\r\n"
           "  <applicationID>Velmora TAPI service provider</applicationID>\r\n"
           "  <applicationSpecificInfo>\r\n"
           "   <tns:SessionLoginInfo xmlns:tns=\"" +
           schema +
           "\">\r\n"
           "    <tns:userName>" +
           username +
           "</tns:userName>\r\n"
           "    <tns:password>" +
           password +
           "</tns:password>\r\n"
           "    <tns:domain>" +
           domain +
           "</tns:domain>\r\n"
           "    <tns:sessionCleanupDelay>60</tns:sessionCleanupDelay>\r\n"
           "   </tns:SessionLoginInfo>\r\n"
           "  </applicationSpecificInfo>\r\n"
           " </applicationInfo>\r\n"
           " <requestedProtocolVersions>\r\n"
           "  <protocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed3</protocolVersion>\r\n"
           "  <protocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed4</protocolVersion>\r\n"
           "  <protocolVersion>http://www.ecma-international.org/standards/ecma-323/csta/ed5</protocolVersion>\r\n"
           " </requestedProtocolVersions>\r\n"
           " <requestedSessionDuration>1800</requestedSessionDuration>\r\n"
           "</StartApplicationSession>\r\n";
}

std::string ResetApplicationSessionTimer(const std::string& sessionId) {
    return "<?xml version=\"1.0\"?>\r\n"
           "<ResetApplicationSessionTimer xmlns=\"http://www.ecma-international.org/standards/ecma-354/appl_session\""
           " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\r\n"
           " <sessionID>" +
           sessionId +
           "</sessionID>\r\n"
           " <requestedSessionDuration>1800</requestedSessionDuration>\r\n"
           "</ResetApplicationSessionTimer>\r\n";
}

std::string MonitorStart(const std::string& device) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
           "<MonitorStart xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed6\">\r\n"
           "<monitorObject>\r\n"
           "<deviceObject>" +
           device +
           "</deviceObject>\r\n"
           "</monitorObject>\r\n"
           "<monitorType>device</monitorType>\r\n"
           "<requestedMonitorMediaClass>\r\n"
           "<voice>true</voice>\r\n"
           "<im>true</im>\r\n"
           "</requestedMonitorMediaClass>\r\n"
           "</MonitorStart>\r\n";
}

// The line of autoOriginate is given with its end, or left out.
std::string MakeCallRequest(const std::string& device, const std::string& number, const std::string& autoOriginate) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
           "<MakeCall xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed6\">\r\n"
           "<callingDevice>" +
           device +
           "</callingDevice>\r\n"
           "<calledDirectoryNumber>" +
           number + "</calledDirectoryNumber>\r\n" + autoOriginate + "</MakeCall>\r\n";
}

std::string ClearConnection(const std::string& callId, const std::string& device) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
           "<ClearConnection xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed6\">\r\n"
           "<connectionToBeCleared>\r\n"
           "<callID>" +
           callId +
           "</callID>\r\n"
           "<deviceID>" +
           device +
           "</deviceID>\r\n"
           "</connectionToBeCleared>\r\n"
           "</ClearConnection>\r\n";
}

class RequestsTest : public ProviderTest {};

TEST_F(RequestsTest, LogInWithTheAccountAndThreeEditions) {
    Init();
    const std::string xml = pbx.WaitForFrame(0).xml;
    const std::string schema = LoginSchema(xml);
    EXPECT_TRUE(schema.starts_with("http://") || schema.starts_with("https://")) << schema;
    EXPECT_EQ(schema.find('/', schema.find("//") + 2), schema.find("/schemas/csta/login")) << schema;
    EXPECT_TRUE(schema.ends_with("/schemas/csta/login")) << schema;
    EXPECT_EQ(xml, StartApplicationSession(schema, kUsername, kPassword, kDomain));
}

TEST_F(RequestsTest, HoldTheAccountWithoutAnyEscaping) {
    registry.Set("username", "4<0>");
    registry.Set("password", "&\"';<p&amp;");
    registry.Set("domain", "a]]>b");
    LogIn();
    const std::string xml = pbx.WaitForFrame(0).xml;
    EXPECT_EQ(xml, StartApplicationSession(LoginSchema(xml), "4<0>", "&\"';<p&amp;", "a]]>b"));
    EXPECT_EQ(pbx.WaitForFrame(1).xml, MonitorStart("4<0>@a]]>b"));
    MakeCall(L"1");
    EXPECT_EQ(pbx.WaitForFrame(2).xml, MakeCallRequest("4<0>@a]]>b", "1", ""));
}

TEST_F(RequestsTest, HoldTheAccountAsEmptyTextsWhenThereIsNone) {
    for (const char* name : {"username", "password", "domain"}) registry.RemoveValue(name);
    Init();
    const std::string xml = pbx.WaitForFrame(0).xml;
    EXPECT_EQ(xml, StartApplicationSession(LoginSchema(xml), "", "", ""));
}

TEST_F(RequestsTest, MonitorTheUsersDevice) {
    LogIn();
    EXPECT_EQ(pbx.WaitForFrame(1).xml, MonitorStart(kDevice));
}

TEST_F(RequestsTest, PlaceACall) {
    LogIn();
    MakeCall(L"+49 (30) 1234");
    EXPECT_EQ(pbx.WaitForFrame(2).xml, MakeCallRequest(kDevice, "49301234", ""));
    MakeCall(L"nobody");
    EXPECT_EQ(pbx.WaitForFrame(3).xml, MakeCallRequest(kDevice, "", ""));
}

TEST_F(RequestsTest, PlaceACallWithoutPrompting) {
    registry.Set("autooriginate", "1");
    LogIn();
    MakeCall(L"123");
    EXPECT_EQ(pbx.WaitForFrame(2).xml,
              MakeCallRequest(kDevice, "123", "<autoOriginate>doNotPrompt</autoOriginate>\r\n"));
}

TEST_F(RequestsTest, ClearACallByTheIdentifiersOfThePbxIfItGaveAny) {
    LogIn();
    const HDRVCALL bound = MakeCall(L"123");
    const HDRVCALL unbound = MakeCall(L"456");
    SendAndWait(WaitForMakeCall("123"), CallMade("a&amp;b", "d&lt;e"));
    EXPECT_EQ(CloseCall(bound), ClearConnection("a&b", "d<e"));
    EXPECT_EQ(CloseCall(unbound), ClearConnection("", kDevice));
}

TEST_F(RequestsTest, ProlongTheSession) {
    LogIn();
    EXPECT_TRUE(pbx.SendFrame(1, SessionAccepted("S&amp;17", "1")));
    EXPECT_EQ(pbx.WaitForFrame(3).xml, ResetApplicationSessionTimer("S&17"));
}

TEST_F(RequestsTest, CarryInvokeIdsFromOneOnThroughAllSessions) {
    LogIn();
    const HDRVCALL call = MakeCall(L"1");
    MakeCall(L"2");
    CloseCall(call);
    EXPECT_TRUE(pbx.SendFrame(1, SessionAccepted("S1", "1")));
    pbx.WaitForFrame(6);
    Stop();
    Init();
    pbx.WaitForFrame(7);
    uint32_t expected = 1;
    for (const ReceivedFrame& frame : pbx.Frames()) EXPECT_EQ(frame.invokeId, expected++);
}

TEST_F(RequestsTest, AreFramedByLengthAndInvokeId) {
    LogIn();
    MakeCall(L"123");
    pbx.WaitForFrame(2);
    std::string expected;
    for (const ReceivedFrame& frame : pbx.Frames()) expected += FrameBytes(frame.invokeId, frame.xml);
    EXPECT_EQ(pbx.Bytes(), expected);
    EXPECT_FALSE(pbx.SawMalformedFrame());
}

// The length in a frame's header has 16 bits.
TEST_F(RequestsTest, FillAFrameUpToItsLastByteAndAreNotSentBeyond) {
    constexpr size_t kMostXmlBytes = 65535 - 8;
    const size_t mostDigits = kMostXmlBytes - MakeCallRequest(kDevice, "", "").size();
    LogIn();
    const std::string longest(mostDigits, '7');
    MakeCall(Wide(longest));
    EXPECT_EQ(pbx.WaitForFrame(2).bytes.size(), 65535U);
    EXPECT_EQ(pbx.WaitForFrame(2).xml, MakeCallRequest(kDevice, longest, ""));
    EXPECT_EQ(log.TextsOfLevel(1), LogTexts());

    const HDRVCALL call = MakeCall(Wide(longest + "8"));
    EXPECT_EQ(log.TextsOfLevel(1).size(), 1U);
    MakeCall(std::wstring(200000, L'9'));
    EXPECT_EQ(log.TextsOfLevel(1).size(), 2U);
    EXPECT_EQ(CloseCall(call), ClearConnection("", kDevice));
    EXPECT_NE(pbx.WaitForFrame(3).xml.find("<ClearConnection "), std::string::npos);
    EXPECT_FALSE(pbx.SawMalformedFrame());
}

}  // namespace
}  // namespace velmora
