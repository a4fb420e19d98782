#include "tools/velmoractl/pbx_exchange.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

class PbxExchangeTest : public testing::Test {
protected:
    void Send(const ByteString& xml) { exchange.Observe(true, XmlNode(xml, true)); }
    void Receive(const ByteString& xml) { exchange.Observe(false, XmlNode(xml, true)); }

    void LogIn() {
        Send("<StartApplicationSession/>");
        Receive(
            "<StartApplicationSessionPosResponse><sessionID>3</sessionID><actualSessionDuration>60"
            "</actualSessionDuration></StartApplicationSessionPosResponse>");
    }

    PbxExchange exchange;
};

TEST_F(PbxExchangeTest, BeginsWithNothingAsked) {
    EXPECT_EQ(exchange.login.state, PbxRequest::State::kNotSent);
    EXPECT_FALSE(exchange.call.Settled());
}

TEST_F(PbxExchangeTest, LearnsTheSessionFromTheLogin) {
    Send("<StartApplicationSession/>");
    EXPECT_EQ(exchange.login.state, PbxRequest::State::kSent);
    LogIn();
    EXPECT_TRUE(exchange.login.Granted());
    EXPECT_EQ(exchange.sessionId, "3");
    EXPECT_EQ(exchange.sessionDuration, "60");
}

TEST_F(PbxExchangeTest, LearnsWhyALoginWasRefused) {
    Send("<StartApplicationSession/>");
    Receive(
        "<StartApplicationSessionNegResponse><errorCode><definedError>invalidApplicationInfo</definedError></errorCode>"
        "</StartApplicationSessionNegResponse>");
    EXPECT_TRUE(exchange.login.Refused());
    EXPECT_EQ(exchange.login.reason, "definedError invalidApplicationInfo");
}

TEST_F(PbxExchangeTest, LearnsTheCallFromTheAnswerToIt) {
    LogIn();
    Send("<MakeCall><calledDirectoryNumber>4930</calledDirectoryNumber></MakeCall>");
    Receive(
        "<c:MakeCallResponse><c:callingDevice><c:callID>7</c:callID><c:deviceID>40@example.com</c:deviceID>"
        "</c:callingDevice></c:MakeCallResponse>");
    EXPECT_TRUE(exchange.call.Granted());
    EXPECT_EQ(exchange.dialledNumber, "4930");
    EXPECT_EQ(exchange.callId, "7");
    EXPECT_EQ(exchange.deviceId, "40@example.com");
}

TEST_F(PbxExchangeTest, TakesAnErrorForTheAnswerToTheOldestRequest) {
    LogIn();
    Send("<MonitorStart/>");
    Send("<MakeCall/>");
    Receive("<CSTAErrorCode><operation>generic</operation></CSTAErrorCode>");
    EXPECT_TRUE(exchange.monitor.Refused());
    EXPECT_FALSE(exchange.call.Settled());
    Receive("<CSTAErrorCode><operation>invalidDestination</operation></CSTAErrorCode>");
    EXPECT_TRUE(exchange.call.Refused());
    EXPECT_EQ(exchange.call.reason, "operation invalidDestination");
}

TEST_F(PbxExchangeTest, TakesAnErrorAfterAnAnsweredRequestForTheNextOne) {
    LogIn();
    Send("<MonitorStart/>");
    Send("<MakeCall/>");
    Receive("<MonitorStartResponse/>");
    Receive("<CSTAErrorCode><operation>generic</operation></CSTAErrorCode>");
    EXPECT_TRUE(exchange.monitor.Granted());
    EXPECT_TRUE(exchange.call.Refused());
}

TEST_F(PbxExchangeTest, DoesNotTakeARefusedRenewalForARefusedCall) {
    LogIn();
    Send("<MakeCall/>");
    Send("<ResetApplicationSessionTimer/>");
    Receive("<ResetApplicationSessionTimerNegResponse/>");
    EXPECT_TRUE(exchange.reset.Refused());
    EXPECT_FALSE(exchange.call.Settled());
}

TEST_F(PbxExchangeTest, IgnoresAnswersThatNobodyAskedFor) {
    Receive("<MakeCallResponse><callingDevice><callID>7</callID></callingDevice></MakeCallResponse>");
    Receive("<CSTAErrorCode/>");
    EXPECT_FALSE(exchange.call.Settled());
    EXPECT_EQ(exchange.callId, "");
}

TEST_F(PbxExchangeTest, IgnoresEventsAndWhatCannotBeRead) {
    Send("<MakeCall/>");
    Receive("<DeliveredEvent/>");
    Receive("no XML");
    EXPECT_EQ(exchange.call.state, PbxRequest::State::kSent);
}

TEST_F(PbxExchangeTest, FollowsTheClosingOfACall) {
    Send("<ClearConnection/>");
    EXPECT_EQ(exchange.clear.state, PbxRequest::State::kSent);
    Receive("<ClearConnectionResponse/>");
    EXPECT_TRUE(exchange.clear.Granted());
}

}  // namespace
}  // namespace velmora::ctl
