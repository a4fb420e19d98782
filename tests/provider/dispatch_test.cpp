#include "tests/provider/provider_test.h"
#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

// What the messages of the PBX do.
class DispatchTest : public ProviderTest {
protected:
    void SetUp() override {
        Init();
        pbx.WaitForFrame(0);
    }

    // Sends a message that must not have any effect: the next request is one that this test asks for.
    void ExpectNoReaction(uint32_t invokeId, const std::string& xml) {
        SCOPED_TRACE(xml);
        const size_t frames = pbx.Frames().size();
        SendAndWait(invokeId, xml);
        EXPECT_EQ(pbx.Frames().size(), frames + 1) << "more than the MonitorStart just asked for";
        EXPECT_TRUE(log.WaitForText("CSTA Rx: " + xml));
    }

    // Sends a login answer or the like and expects one MonitorStart for it.
    void ExpectMonitorStart(const std::string& xml) {
        SCOPED_TRACE(xml);
        const size_t monitorStarts = MonitorStarts();
        const size_t frames = pbx.Frames().size();
        EXPECT_TRUE(pbx.SendFrame(1, xml));
        EXPECT_TRUE(pbx.WaitForFrames(frames + 1));
        EXPECT_EQ(MonitorStarts(), monitorStarts + 1);
    }
};

TEST_F(DispatchTest, EveryAcceptedLoginStartsTheMonitorWhateverItsInvokeId) {
    ExpectMonitorStart(SessionAccepted("S1", "1800"));
    EXPECT_EQ(pbx.WaitForFrame(1).invokeId, 2U);
    EXPECT_EQ(ElementText(pbx.WaitForFrame(1).xml, "deviceObject"), kDevice);
    EXPECT_TRUE(pbx.SendFrame(0xFFFFFFFF, SessionAccepted("S2", "1800")));
    EXPECT_TRUE(pbx.WaitForFrames(3));
    EXPECT_EQ(MonitorStarts(), 2U);
}

TEST_F(DispatchTest, AnAcceptedLoginIsKnownByItsLocalName) {
    ExpectMonitorStart(
        "<s:StartApplicationSessionPosResponse xmlns:s=\"urn:x\"><s:sessionID>1</s:sessionID>"
        "<s:actualSessionDuration>1800</s:actualSessionDuration>"
        "</s:StartApplicationSessionPosResponse>");
}

TEST_F(DispatchTest, ADurationIsReadFromTheNumberAtItsStart) {
    for (const char* duration : {" 1800", "+1800", "1800s", "\r\n\t1800\r\n", "1800.9", "&#49;800", "0001"}) {
        ExpectMonitorStart(SessionAccepted("S1", duration));
    }
}

TEST_F(DispatchTest, ALoginGrantedForNoTimeStartsNothing) {
    for (const char* duration : {"0", "-1", "-2147483648", "0x10"}) {
        ExpectNoReaction(1, SessionAccepted("S1", duration));
    }
}

TEST_F(DispatchTest, AMessageWithAnUnreadableDurationIsIgnored) {
    for (const char* duration : {"", "abc", " ", "-", "2147483648", "-2147483649", "99999999999999999999"}) {
        ExpectNoReaction(1, SessionAccepted("S1", duration));
        ExpectNoReaction(1, SessionTimerReset(duration));
    }
    ExpectNoReaction(1, "<StartApplicationSessionPosResponse/>");
    ExpectNoReaction(1, "<ResetApplicationSessionTimerPosResponse/>");
}

TEST_F(DispatchTest, OtherMessagesAreRecordedAndIgnored) {
    for (const char* xml :
         {"<Unknown/>", "", "no XML", "<", "<>",
          "<startapplicationsessionposresponse><actualSessionDuration>1800"
          "</actualSessionDuration></startapplicationsessionposresponse>",
          "<StartApplicationSessionPosResponses><actualSessionDuration>1800</actualSessionDuration>"
          "</StartApplicationSessionPosResponses>",
          "<StartApplicationSessionNegResponse><errorCode><applSessError>invalidApplicationInfo</applSessError>"
          "</errorCode></StartApplicationSessionNegResponse>",
          "<MonitorStartResponse><monitorCrossRefID>1</monitorCrossRefID></MonitorStartResponse>",
          "<ClearConnectionResponse/>"}) {
        ExpectNoReaction(1, xml);
    }
    ExpectNoReaction(0, CallDelivered("C-1"));
    ExpectNoReaction(2, RequestRefused());
}

TEST_F(DispatchTest, ARefusedCallStaysUnbound) {
    const HDRVCALL call = MakeCall(L"1");
    SendAndWait(WaitForMakeCall("1"), RequestRefused());
    const std::string xml = CloseCall(call);
    EXPECT_NE(xml.find("<callID></callID>"), std::string::npos);
    EXPECT_EQ(ElementText(xml, "deviceID"), kDevice);
}

TEST_F(DispatchTest, EventsOfACallLeaveItAsItIs) {
    const HDRVCALL call = MakeCall(L"1");
    const uint32_t invokeId = WaitForMakeCall("1");
    SendAndWait(invokeId, CallMade("C-1", "D-1"));
    SendAndWait(invokeId, CallDelivered("C-2"));
    SendAndWait(invokeId,
                "<ConnectionClearedEvent><callingDevice><callID>3</callID></callingDevice>"
                "</ConnectionClearedEvent>");
    SendAndWait(invokeId,
                "<ClearConnectionResponse><callingDevice><callID>3</callID></callingDevice>"
                "</ClearConnectionResponse>");
    EXPECT_EQ(ElementText(CloseCall(call), "callID"), "C-1");
}

struct Answer {
    const char* xml;
    const char* callId;
    const char* deviceId;
};

// Answers each of ten calls and compares what it is cleared by.
class CallAnswersTest : public DispatchTest {
protected:
    void ExpectIdentifiers(const Answer& answer) {
        SCOPED_TRACE(answer.xml);
        const std::string number = std::to_string(++calls);
        const HDRVCALL call = MakeCall(Wide(number));
        SendAndWait(WaitForMakeCall(number), answer.xml);
        const std::string xml = CloseCall(call);
        EXPECT_EQ(ElementText(xml, "callID"), answer.callId);
        EXPECT_EQ(ElementText(xml, "deviceID"), answer.deviceId);
    }

    int calls = 0;
};

TEST_F(CallAnswersTest, AreFoundByTheLocalNamesOfTheirElements) {
    const Answer answers[] = {
        {"<csta:MakeCallResponse xmlns:csta=\"urn:c\"><csta:callingDevice><csta:callID>1</csta:callID>"
         "<csta:deviceID>d</csta:deviceID></csta:callingDevice></csta:MakeCallResponse>",
         "1", "d"},
        // The first of several elements counts.
        {"<MakeCallResponse><callingDevice><callID>1</callID><callID>2</callID><deviceID>d</deviceID></callingDevice>"
         "<callingDevice><callID>3</callID></callingDevice></MakeCallResponse>",
         "1", "d"},
        // Elsewhere than at callingDevice they do not.
        {"<MakeCallResponse><callID>1</callID><calledDevice><callID>2</callID><deviceID>d</deviceID></calledDevice>"
         "</MakeCallResponse>",
         "", ""},
        {"<MakeCallResponse><x><callingDevice><callID>1</callID><deviceID>d</deviceID></callingDevice></x>"
         "</MakeCallResponse>",
         "", ""},
        {"<MakeCallResponse><callingDevice><callID>1</callID></callingDevice></MakeCallResponse>", "1", ""},
        {"<MakeCallResponse><callingDevice><deviceID>d</deviceID></callingDevice></MakeCallResponse>", "", "d"},
        {"<MakeCallResponse/>", "", ""},
        // Names are compared in their case.
        {"<MakeCallResponse><callingDevice><callid>1</callid><DeviceID>d</DeviceID></callingDevice>"
         "</MakeCallResponse>",
         "", ""},
        // Any end tag closes the open element.
        {"<MakeCallResponse><callingDevice><callID>1</x><deviceID>d</y></z></MakeCallResponse>", "1", "d"},
        // A declaration, comments, processing instructions and stray text in front are skipped.
        {"\r\n<?xml version=\"1.0\"?><!-- <MakeCallResponse> -->text<?x <y> ?><MakeCallResponse a='>' b=\"'/>\">"
         "<callingDevice><callID>1</callID><deviceID>d</deviceID></callingDevice></MakeCallResponse>",
         "1", "d"},
    };
    for (const Answer& answer : answers) ExpectIdentifiers(answer);
}

TEST_F(CallAnswersTest, GiveTheirTextsDecoded) {
    const Answer answers[] = {
        {"<MakeCallResponse><callingDevice><callID>&lt;&gt;&amp;&apos;&quot;</callID><deviceID>&#65;&#x41;&#x4a;"
         "</deviceID></callingDevice></MakeCallResponse>",
         "<>&'\"", "AAJ"},
        // An upper-case X is a digit worth 0 of a decimal number; unknown names and a lone ampersand stay.
        {"<MakeCallResponse><callingDevice><callID>&#X65;&nbsp;&LT;&</callID><deviceID>&amp;lt;</deviceID>"
         "</callingDevice></MakeCallResponse>",
         "A&nbsp;&LT;&", "&lt;"},
        // UTF-8 of 1, 2, 3 and 4 bytes; nothing for a number beyond them.
        {"<MakeCallResponse><callingDevice><callID>&#x7F;&#x80;&#x7FF;&#x800;&#xFFFF;</callID>"
         "<deviceID>&#x10000;&#x1FFFFF;|&#x200000;|</deviceID></callingDevice></MakeCallResponse>",
         "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", "\xF0\x90\x80\x80\xF7\xBF\xBF\xBF||"},
        // White space stays, and bytes beyond ASCII.
        {"<MakeCallResponse><callingDevice><callID> 1\r\n\t</callID><deviceID>J\xC3\xB6rg\xFF</deviceID>"
         "</callingDevice></MakeCallResponse>",
         " 1\r\n\t", "J\xC3\xB6rg\xFF"},
        // CDATA is taken as it is, between texts; comments and children leave nothing.
        {"<MakeCallResponse><callingDevice><callID>1<![CDATA[&lt;<x>]]>2</callID>"
         "<deviceID>a<!-- - -->b<c>no</c>d<?p?></deviceID></callingDevice></MakeCallResponse>",
         "1&lt;<x>2", "abd"},
        // An element that is still open at the end has no text.
        {"<MakeCallResponse><callingDevice><callID>1</callID><deviceID>d", "1", ""},
        // A name ends at a byte beyond ASCII; what follows is no attribute and takes the rest of the message along.
        {"<MakeCallResponse><callingDevice><callID>1</callID><deviceID\xC3\xB6>d</deviceID></callingDevice>"
         "</MakeCallResponse>",
         "1", ""},
        // White space around the equals sign takes the rest along, too.
        {"<MakeCallResponse><callingDevice><callID>1</callID><deviceID a = \"1\">d</deviceID></callingDevice>"
         "</MakeCallResponse>",
         "1", ""},
        // Unquoted attributes end at white space.
        {"<MakeCallResponse><callingDevice><callID a=1 b=2 >1</callID><deviceID a='\"' >d</deviceID></callingDevice>"
         "</MakeCallResponse>",
         "1", "d"},
        {"<MakeCallResponse><callingDevice/><callingDevice><callID>1</callID></callingDevice></MakeCallResponse>", "",
         ""},
    };
    for (const Answer& answer : answers) ExpectIdentifiers(answer);
}

}  // namespace
}  // namespace velmora
