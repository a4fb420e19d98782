#include "tools/pbxsim/pbx.h"

#include <gtest/gtest.h>

#include "tests/tools/pbxsim/requests.h"

namespace velmora::pbxsim {
namespace {

const ByteString kDevice = "40@example.com";

// The values of an answer, read as the provider reads them: by the local names from the root downwards.
ByteString TextAt(const Message& message, const ByteString& path) {
    return XmlNode(message.xml, true).textAt(path);
}

ByteString NameOf(const Message& message) {
    return XmlNode(message.xml, true).localName;
}

ByteString NamespaceOf(const Message& message) {
    const XmlNode root(message.xml, true);
    for (const XmlAttribute& attribute : root.attributes) {
        if (attribute.prefix.empty() && attribute.localName == "xmlns") return attribute.value;
    }
    return {};
}

std::vector<ByteString> NamesOf(const std::vector<Message>& messages) {
    std::vector<ByteString> names;
    names.reserve(messages.size());
    for (const Message& message : messages) names.push_back(NameOf(message));
    return names;
}

using Names = std::vector<ByteString>;

class PbxTest : public testing::Test {
protected:
    void Send(const ByteString& xml) { session.Receive(++lastInvokeId, XmlNode(xml, true), nowMs); }

    std::vector<Message> TakeDue() { return session.TakeDue(nowMs); }

    // The one message that answers a request.
    Message Ask(const ByteString& xml) {
        Send(xml);
        const std::vector<Message> answers = TakeDue();
        EXPECT_EQ(answers.size(), 1U) << xml;
        if (answers.empty()) return {};
        EXPECT_EQ(answers[0].invokeId, lastInvokeId);
        return answers[0];
    }

    void LogIn() { ASSERT_EQ(NameOf(Ask(Login())), "StartApplicationSessionPosResponse"); }

    Pbx pbx;
    ClientSession session{pbx};
    uint64_t nowMs = 1000000;
    uint32_t lastInvokeId = 0;
};

TEST_F(PbxTest, AcceptsAnyLoginWhenNoneIsPrescribed) {
    const Message answer = Ask(Login("anybody", "", "anywhere"));
    EXPECT_EQ(NameOf(answer), "StartApplicationSessionPosResponse");
    EXPECT_EQ(NamespaceOf(answer), kEcma354);
    EXPECT_NE(TextAt(answer, "sessionID"), "");
    EXPECT_EQ(TextAt(answer, "actualSessionDuration"), "1800");
}

TEST_F(PbxTest, AcceptsTheLoginThatIsPrescribed) {
    pbx.behaviour.user = "40";
    pbx.behaviour.password = "secret";
    pbx.behaviour.domain = "example.com";
    EXPECT_EQ(NameOf(Ask(Login())), "StartApplicationSessionPosResponse");
}

TEST_F(PbxTest, RefusesALoginWithOneWrongPart) {
    pbx.behaviour.user = "40";
    pbx.behaviour.password = "secret";
    pbx.behaviour.domain = "example.com";
    struct WrongLogin {
        ByteString login;
        const char* remark;
    };
    const WrongLogin wrongLogins[] = {
        {Login("41", "secret", "example.com"), "wrong user name"},
        {Login("40", "Secret", "example.com"), "wrong password"},
        {Login("40", "", "example.com"), "wrong password"},
        {Login("40", "secret", "example.org"), "wrong domain"},
        {"<StartApplicationSession/>", "wrong user name"},
    };
    for (const WrongLogin& wrong : wrongLogins) {
        SCOPED_TRACE(wrong.remark);
        const Message answer = Ask(wrong.login);
        EXPECT_EQ(NameOf(answer), "StartApplicationSessionNegResponse");
        EXPECT_EQ(NamespaceOf(answer), kEcma354);
        EXPECT_EQ(TextAt(answer, "errorCode/definedError"), "invalidApplicationInfo");
        EXPECT_EQ(answer.remark, wrong.remark);
        EXPECT_EQ(NameOf(Ask(MonitorStart(kDevice))), "CSTAErrorCode");
    }
}

TEST_F(PbxTest, ChecksOnlyThePartsThatArePrescribed) {
    pbx.behaviour.domain = "example.com";
    EXPECT_EQ(NameOf(Ask(Login("anybody", "anything", "example.com"))), "StartApplicationSessionPosResponse");
    EXPECT_EQ(NameOf(Ask(Login("anybody", "anything", "example.org"))), "StartApplicationSessionNegResponse");
}

TEST_F(PbxTest, TakesAPasswordWithAnAmpersandThatIsNotEscaped) {
    pbx.behaviour.password = "salt&pepper";
    EXPECT_EQ(NameOf(Ask(Login("40", "salt&pepper", "example.com"))), "StartApplicationSessionPosResponse");
}

TEST_F(PbxTest, RefusesEveryLoginWhenToldTo) {
    pbx.behaviour.rejectLogin = true;
    EXPECT_EQ(TextAt(Ask(Login()), "errorCode/definedError"), "invalidApplicationInfo");
}

TEST_F(PbxTest, AgreesOnTheNewestEditionOffered) {
    const struct {
        ByteString offered;
        ByteString agreed;
    } cases[] = {
        {ProtocolVersion(3), CstaNamespace(3)},
        {ProtocolVersion(5) + ProtocolVersion(4), CstaNamespace(5)},
        {ProtocolVersion(3) + ProtocolVersion(6) + ProtocolVersion(4), CstaNamespace(6)},
        {ProtocolVersion(3) + ProtocolVersion(7), CstaNamespace(3)},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.offered);
        EXPECT_EQ(TextAt(Ask(Login("40", "", "", each.offered)), "actualProtocolVersion"), each.agreed);
        EXPECT_EQ(NamespaceOf(Ask(MonitorStart(kDevice))), each.agreed);
    }
}

TEST_F(PbxTest, RefusesALoginWithoutAnEditionThatItSpeaks) {
    for (const ByteString& offered : {ByteString(), ProtocolVersion(2), ProtocolVersion(7)}) {
        SCOPED_TRACE(offered);
        const Message answer = Ask(Login("40", "", "", offered));
        EXPECT_EQ(TextAt(answer, "errorCode/definedError"), "requestedProtocolVersionNotSupported");
    }
}

TEST_F(PbxTest, RefusesRequestsBeforeALogin) {
    for (const ByteString& request :
         {MonitorStart(kDevice), MakeCall(kDevice, "100"), ClearConnection("1", kDevice), ByteString("<Other/>")}) {
        SCOPED_TRACE(request);
        const Message answer = Ask(request);
        EXPECT_EQ(NameOf(answer), "CSTAErrorCode");
        EXPECT_EQ(TextAt(answer, "operation"), "generic");
        EXPECT_EQ(answer.remark, "no login yet");
    }
    EXPECT_EQ(TextAt(Ask(ResetTimer("")), "errorCode/definedError"), "invalidSessionID");
}

TEST_F(PbxTest, AnswersWhatItDoesNotKnowWithAnError) {
    LogIn();
    for (const char* request : {"<AnswerCall/>", "<makecall/>", "", "no XML at all", "<", "<?xml?>"}) {
        SCOPED_TRACE(request);
        const Message answer = Ask(request);
        EXPECT_EQ(NameOf(answer), "CSTAErrorCode");
        EXPECT_EQ(TextAt(answer, "operation"), "generic");
    }
}

TEST_F(PbxTest, GivesEveryClientASessionOfItsOwn) {
    ClientSession other(pbx);
    const ByteString first = TextAt(Ask(Login()), "sessionID");
    other.Receive(1, XmlNode(Login(), true), nowMs);
    const std::vector<Message> answers = other.TakeDue(nowMs);
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_NE(TextAt(answers[0], "sessionID"), first);
    EXPECT_EQ(NameOf(Ask(ResetTimer(TextAt(answers[0], "sessionID")))), "ResetApplicationSessionTimerNegResponse");
}

TEST_F(PbxTest, RenewsASessionThatItKnows) {
    pbx.behaviour.sessionSeconds = 90;
    const ByteString sessionId = TextAt(Ask(Login()), "sessionID");
    const Message answer = Ask(ResetTimer(sessionId));
    EXPECT_EQ(NameOf(answer), "ResetApplicationSessionTimerPosResponse");
    EXPECT_EQ(NamespaceOf(answer), kEcma354);
    EXPECT_EQ(TextAt(answer, "actualSessionDuration"), "90");
    EXPECT_EQ(TextAt(Ask(ResetTimer(sessionId + "0")), "errorCode/definedError"), "invalidSessionID");
}

TEST_F(PbxTest, EndsASessionWhoseTimeRunsOut) {
    pbx.behaviour.sessionSeconds = 2;
    const ByteString sessionId = TextAt(Ask(Login()), "sessionID");
    EXPECT_EQ(session.NextDueMs(), nowMs + 2000);
    nowMs += 1999;
    EXPECT_TRUE(TakeDue().empty());
    EXPECT_FALSE(session.Ended());

    nowMs += 1;
    const std::vector<Message> last = TakeDue();
    ASSERT_EQ(NamesOf(last), (Names{"ApplicationSessionTerminated"}));
    EXPECT_EQ(last[0].invokeId, kEventInvokeId);
    EXPECT_EQ(TextAt(last[0], "sessionID"), sessionId);
    EXPECT_EQ(TextAt(last[0], "sessionTermReason/definedTermReason"), "sessionTimerExpired");
    EXPECT_TRUE(session.Ended());
    EXPECT_EQ(session.NextDueMs(), std::nullopt);

    Send(Login());
    EXPECT_TRUE(TakeDue().empty());
}

TEST_F(PbxTest, LetsASessionLiveAsLongAsItIsRenewed) {
    pbx.behaviour.sessionSeconds = 2;
    const ByteString sessionId = TextAt(Ask(Login()), "sessionID");
    for (int renewal = 0; renewal < 5; ++renewal) {
        nowMs += 1999;
        EXPECT_EQ(NameOf(Ask(ResetTimer(sessionId))), "ResetApplicationSessionTimerPosResponse");
    }
    // A renewal that comes too late is not taken, even when nobody has looked at the clock since.
    nowMs += 2000;
    Send(ResetTimer(sessionId));
    EXPECT_EQ(NamesOf(TakeDue()), (Names{"ApplicationSessionTerminated"}));
}

TEST_F(PbxTest, NeverEndsASessionOfNoDuration) {
    pbx.behaviour.sessionSeconds = 0;
    EXPECT_EQ(TextAt(Ask(Login()), "actualSessionDuration"), "0");
    EXPECT_EQ(session.NextDueMs(), std::nullopt);
    nowMs += uint64_t{1} << 40;
    EXPECT_EQ(NameOf(Ask(MonitorStart(kDevice))), "MonitorStartResponse");
}

TEST_F(PbxTest, NumbersTheMonitors) {
    LogIn();
    const Message first = Ask(MonitorStart(kDevice));
    EXPECT_EQ(NameOf(first), "MonitorStartResponse");
    EXPECT_EQ(NamespaceOf(first), kEdition5);
    EXPECT_NE(TextAt(first, "monitorCrossRefID"), "");
    EXPECT_NE(TextAt(Ask(MonitorStart(kDevice)), "monitorCrossRefID"), TextAt(first, "monitorCrossRefID"));
    EXPECT_EQ(TextAt(Ask(MonitorStart("")), "operation"), "invalidDeviceID");
}

TEST_F(PbxTest, NamesTheCallUnderTheInvokeIdOfItsRequest) {
    LogIn();
    lastInvokeId = 0xFFFFFFF0;
    const Message first = Ask(MakeCall(kDevice, "100"));
    EXPECT_EQ(NameOf(first), "MakeCallResponse");
    EXPECT_EQ(NamespaceOf(first), kEdition5);
    EXPECT_NE(TextAt(first, "callingDevice/callID"), "");
    EXPECT_EQ(TextAt(first, "callingDevice/deviceID"), kDevice);
    const Message second = Ask(MakeCall(kDevice, "100"));
    EXPECT_NE(TextAt(second, "callingDevice/callID"), TextAt(first, "callingDevice/callID"));
}

TEST_F(PbxTest, RefusesACallWithoutTwoUsableDevices) {
    LogIn();
    const ByteString longest(256, 'x');
    for (const ByteString& device : {ByteString(), ByteString("40\t"), ByteString("4\0001", 3), longest + "x"}) {
        SCOPED_TRACE(device);
        EXPECT_EQ(TextAt(Ask(MakeCall(device, "100")), "operation"), "invalidCallingDeviceID");
        EXPECT_EQ(TextAt(Ask(MakeCall(kDevice, device)), "operation"), "invalidCalledDeviceID");
    }
    EXPECT_EQ(NameOf(Ask(MakeCall(longest, longest))), "MakeCallResponse");
}

TEST_F(PbxTest, RefusesEveryCallWhenToldTo) {
    pbx.behaviour.errorOnMakeCall = true;
    LogIn();
    const Message answer = Ask(MakeCall(kDevice, "100"));
    EXPECT_EQ(NameOf(answer), "CSTAErrorCode");
    EXPECT_EQ(NamespaceOf(answer), kEdition5);
    EXPECT_EQ(TextAt(answer, "operation"), "generic");
}

TEST_F(PbxTest, ReturnsADeviceAsItCameWhateverItsCharacters) {
    LogIn();
    const ByteString device = "R&D <\"'> \xC3\xA4 \xE4";
    const Message answer = Ask(MakeCall(EscapeXml(device), "100"));
    EXPECT_EQ(TextAt(answer, "callingDevice/deviceID"), device);
}

TEST_F(PbxTest, ClearsACallOnce) {
    LogIn();
    const ByteString callId = TextAt(Ask(MakeCall(kDevice, "100")), "callingDevice/callID");
    EXPECT_EQ(TextAt(Ask(ClearConnection(callId + "0", kDevice)), "operation"), "invalidConnectionID");
    EXPECT_EQ(TextAt(Ask(ClearConnection(callId, "41@example.com")), "operation"), "invalidConnectionID");
    EXPECT_EQ(TextAt(Ask(ClearConnection("", "")), "operation"), "invalidConnectionID");

    const Message cleared = Ask(ClearConnection(callId, kDevice));
    EXPECT_EQ(NameOf(cleared), "ClearConnectionResponse");
    EXPECT_EQ(NamespaceOf(cleared), kEdition5);
    EXPECT_EQ(TextAt(Ask(ClearConnection(callId, kDevice)), "operation"), "invalidConnectionID");
}

TEST_F(PbxTest, ForgetsCallsAndMonitorsAtANewLogin) {
    pbx.behaviour.events = true;
    LogIn();
    Ask(MonitorStart(kDevice));
    Send(MakeCall(kDevice, "100"));
    const ByteString callId = TextAt(TakeDue().at(0), "callingDevice/callID");
    LogIn();
    nowMs += 10 * kCallStepMs;
    EXPECT_TRUE(TakeDue().empty());
    EXPECT_EQ(TextAt(Ask(ClearConnection(callId, kDevice)), "operation"), "invalidConnectionID");
    EXPECT_EQ(NameOf(Ask(MakeCall(kDevice, "100"))), "MakeCallResponse");
}

TEST_F(PbxTest, KeepsTheSessionWhenASecondLoginIsRefused) {
    pbx.behaviour.user = "40";
    LogIn();
    EXPECT_EQ(NameOf(Ask(Login("41"))), "StartApplicationSessionNegResponse");
    EXPECT_EQ(NameOf(Ask(MonitorStart(kDevice))), "MonitorStartResponse");
}

TEST_F(PbxTest, SendsNoEventsUnlessToldTo) {
    LogIn();
    Ask(MonitorStart(kDevice));
    const ByteString callId = TextAt(Ask(MakeCall(kDevice, "100")), "callingDevice/callID");
    nowMs += 10 * kCallStepMs;
    EXPECT_TRUE(TakeDue().empty());
    EXPECT_EQ(NameOf(Ask(ClearConnection(callId, kDevice))), "ClearConnectionResponse");
}

TEST_F(PbxTest, ReportsACallStepByStep) {
    pbx.behaviour.events = true;
    LogIn();
    const ByteString monitor = TextAt(Ask(MonitorStart(kDevice)), "monitorCrossRefID");
    Send(MakeCall(kDevice, "100"));
    std::vector<Message> messages = TakeDue();
    ASSERT_EQ(NamesOf(messages), (Names{"MakeCallResponse", "ServiceInitiatedEvent"}));
    const ByteString callId = TextAt(messages[0], "callingDevice/callID");

    const struct {
        const char* event;
        const char* connection;
        ByteString device;
        const char* state;
    } steps[] = {
        {"ServiceInitiatedEvent", "initiatedConnection", kDevice, "initiated"},
        {"OriginatedEvent", "originatedConnection", kDevice, "connected"},
        {"DeliveredEvent", "connection", "100", "connected"},
        {"EstablishedEvent", "establishedConnection", "100", "connected"},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.event);
        ASSERT_FALSE(messages.empty());
        const Message& event = messages.back();
        EXPECT_EQ(NameOf(event), step.event);
        EXPECT_EQ(NamespaceOf(event), kEdition5);
        EXPECT_EQ(event.invokeId, kEventInvokeId);
        EXPECT_EQ(TextAt(event, "monitorCrossRefID"), monitor);
        EXPECT_EQ(TextAt(event, ByteString(step.connection) + "/callID"), callId);
        EXPECT_EQ(TextAt(event, ByteString(step.connection) + "/deviceID"), step.device);
        EXPECT_EQ(TextAt(event, "localConnectionInfo"), step.state);
        nowMs += kCallStepMs - 1;
        EXPECT_TRUE(TakeDue().empty());
        nowMs += 1;
        messages = TakeDue();
    }
    EXPECT_TRUE(messages.empty());

    Send(ClearConnection(callId, kDevice));
    messages = TakeDue();
    ASSERT_EQ(NamesOf(messages), (Names{"ClearConnectionResponse", "ConnectionClearedEvent"}));
    EXPECT_EQ(TextAt(messages[1], "droppedConnection/callID"), callId);
    EXPECT_EQ(TextAt(messages[1], "localConnectionInfo"), "null");
}

TEST_F(PbxTest, DialsAtOnceWhenThePhoneNeedNotPrompt) {
    pbx.behaviour.events = true;
    LogIn();
    Ask(MonitorStart(kDevice));
    Send(MakeCall(kDevice, "100", "doNotPrompt"));
    EXPECT_EQ(NamesOf(TakeDue()), (Names{"MakeCallResponse", "OriginatedEvent"}));
    nowMs += 2 * kCallStepMs;
    EXPECT_EQ(NamesOf(TakeDue()), (Names{"DeliveredEvent", "EstablishedEvent"}));
}

TEST_F(PbxTest, StopsTheStepsOfACallThatIsCleared) {
    pbx.behaviour.events = true;
    LogIn();
    Ask(MonitorStart(kDevice));
    Send(MakeCall(kDevice, "100"));
    const ByteString callId = TextAt(TakeDue().at(0), "callingDevice/callID");
    Send(MakeCall(kDevice, "101", "doNotPrompt"));
    TakeDue();
    Send(ClearConnection(callId, kDevice));
    EXPECT_EQ(NamesOf(TakeDue()), (Names{"ClearConnectionResponse", "ConnectionClearedEvent"}));
    nowMs += 10 * kCallStepMs;
    EXPECT_EQ(NamesOf(TakeDue()), (Names{"DeliveredEvent", "EstablishedEvent"}));
}

TEST_F(PbxTest, TellsEveryMonitorOfTheCallingDeviceAndNoOther) {
    pbx.behaviour.events = true;
    LogIn();
    Ask(MonitorStart("41@example.com"));
    const ByteString first = TextAt(Ask(MonitorStart(kDevice)), "monitorCrossRefID");
    const ByteString second = TextAt(Ask(MonitorStart(kDevice)), "monitorCrossRefID");
    Send(MakeCall(kDevice, "100", "doNotPrompt"));
    const std::vector<Message> messages = TakeDue();
    ASSERT_EQ(NamesOf(messages), (Names{"MakeCallResponse", "OriginatedEvent", "OriginatedEvent"}));
    EXPECT_EQ(TextAt(messages[1], "monitorCrossRefID"), first);
    EXPECT_EQ(TextAt(messages[2], "monitorCrossRefID"), second);
}

TEST_F(PbxTest, DelaysEveryAnswerAndItsEvents) {
    pbx.behaviour.events = true;
    pbx.behaviour.answerDelayMs = 300;
    Send(Login());
    Send(MonitorStart(kDevice));
    Send(MakeCall(kDevice, "100", "doNotPrompt"));
    EXPECT_EQ(session.NextDueMs(), nowMs + 300);
    nowMs += 299;
    EXPECT_TRUE(TakeDue().empty());
    nowMs += 1;
    EXPECT_EQ(NamesOf(TakeDue()), (Names{"StartApplicationSessionPosResponse", "MonitorStartResponse",
                                         "MakeCallResponse", "OriginatedEvent"}));
    EXPECT_EQ(session.NextDueMs(), nowMs + kCallStepMs);
}

TEST_F(PbxTest, CountsTheSessionsTimeFromTheDelayedAnswer) {
    pbx.behaviour.answerDelayMs = 5000;
    pbx.behaviour.sessionSeconds = 2;
    Send(Login());
    nowMs += 5000;
    EXPECT_EQ(NamesOf(TakeDue()), (Names{"StartApplicationSessionPosResponse"}));
    nowMs += 1999;
    EXPECT_TRUE(TakeDue().empty());
    nowMs += 1;
    EXPECT_EQ(NamesOf(TakeDue()), (Names{"ApplicationSessionTerminated"}));
}

TEST_F(PbxTest, SendsNothingThatIsDueAfterTheSessionsEnd) {
    pbx.behaviour.answerDelayMs = 5000;
    pbx.behaviour.sessionSeconds = 2;
    Send(Login());
    nowMs += 6000;
    TakeDue();
    Send(MonitorStart(kDevice));
    nowMs += 6000;
    EXPECT_EQ(NamesOf(TakeDue()), (Names{"ApplicationSessionTerminated"}));
    EXPECT_TRUE(TakeDue().empty());
}

TEST_F(PbxTest, NeverAnswersWhenSilent) {
    pbx.behaviour.silent = true;
    Send(Login());
    Send("<Other/>");
    EXPECT_EQ(session.NextDueMs(), std::nullopt);
    nowMs += uint64_t{1} << 40;
    EXPECT_TRUE(TakeDue().empty());
    EXPECT_FALSE(session.Ended());
}

}  // namespace
}  // namespace velmora::pbxsim
