#include "tools/velmoractl/call_history.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

class CallHistoryTest : public testing::Test {
protected:
    void Send(const ByteString& xml, uint64_t atMs) {
        EXPECT_FALSE(history.Observe(true, XmlNode(xml, true), atMs)) << "a request answers nothing";
    }

    std::optional<AnsweredRequest> Receive(const ByteString& xml, uint64_t atMs) {
        return history.Observe(false, XmlNode(xml, true), atMs);
    }

    void SendCall(const ByteString& number, uint64_t atMs) {
        Send("<MakeCall><callingDevice>40@example.com</callingDevice><calledDirectoryNumber>" + number +
                 "</calledDirectoryNumber></MakeCall>",
             atMs);
    }

    std::optional<AnsweredRequest> ReceiveCall(const ByteString& callId, uint64_t atMs) {
        return Receive("<MakeCallResponse><callingDevice><callID>" + callId +
                           "</callID><deviceID>40@example.com</deviceID></callingDevice></MakeCallResponse>",
                       atMs);
    }

    void SendClear(const ByteString& callId, uint64_t atMs) {
        Send("<ClearConnection><connectionToBeCleared><callID>" + callId +
                 "</callID><deviceID>40@example.com</deviceID></connectionToBeCleared></ClearConnection>",
             atMs);
    }

    CallHistory history;
};

const ByteString kError = "<CSTAErrorCode><operation>invalidCalledDevice</operation></CSTAErrorCode>";
const ByteString kCleared = "<ClearConnectionResponse/>";

TEST_F(CallHistoryTest, TellsWhatAMessageAnswersAndWhenThatWasAsked) {
    const struct {
        const char* request;
        const char* answer;
        const char* name;
    } kPairs[] = {{"<StartApplicationSession/>", "<StartApplicationSessionPosResponse/>", "StartApplicationSession"},
                  {"<StartApplicationSession/>", "<StartApplicationSessionNegResponse/>", "StartApplicationSession"},
                  {"<ResetApplicationSessionTimer/>", "<ResetApplicationSessionTimerPosResponse/>",
                   "ResetApplicationSessionTimer"},
                  {"<ResetApplicationSessionTimer/>", "<ResetApplicationSessionTimerNegResponse/>",
                   "ResetApplicationSessionTimer"},
                  {"<MonitorStart/>", "<MonitorStartResponse/>", "MonitorStart"},
                  {"<MakeCall/>", "<MakeCallResponse/>", "MakeCall"},
                  {"<MakeCall/>", "<CSTAErrorCode/>", "MakeCall"},
                  {"<ClearConnection/>", "<ClearConnectionResponse/>", "ClearConnection"}};
    uint64_t atMs = 1000;
    for (const auto& [request, answer, name] : kPairs) {
        SCOPED_TRACE(answer);
        Send(request, atMs);
        const std::optional<AnsweredRequest> answered = Receive(answer, atMs + 5);
        ASSERT_TRUE(answered);
        EXPECT_EQ(answered->name, name);
        EXPECT_EQ(answered->askedMs, atMs);
        atMs += 10;
    }
}

TEST_F(CallHistoryTest, TiesNothingToAnEventOrToAnAnswerWithoutRequest) {
    Send("<MonitorStart/>", 1);
    for (const char* message : {"<DeliveredEvent/>", "<MakeCallResponse/>", "<SystemStatus/>", ""}) {
        EXPECT_FALSE(Receive(message, 2)) << message;
    }
    EXPECT_TRUE(Receive("<MonitorStartResponse/>", 3));
    EXPECT_FALSE(Receive("<MonitorStartResponse/>", 4));
}

TEST_F(CallHistoryTest, FollowsACallToItsEnd) {
    SendCall("4930", 100);
    ReceiveCall("7", 150);
    SendClear("7", 9000);
    Receive(kCleared, 9010);
    ASSERT_EQ(history.Calls().size(), 1U);
    const LoggedCall& call = history.Calls()[0];
    EXPECT_EQ(call.askedMs, 100U);
    EXPECT_EQ(call.number, "4930");
    EXPECT_EQ(call.from, "40@example.com");
    EXPECT_EQ(call.answeredMs, 150U);
    EXPECT_FALSE(call.refused);
    EXPECT_EQ(call.callId, "7");
    EXPECT_EQ(call.deviceId, "40@example.com");
    EXPECT_EQ(call.clearedMs, 9010U);
}

TEST_F(CallHistoryTest, TiesAnswersToCallsThatOverlapInTheirOrder) {
    SendCall("1", 10);
    SendCall("2", 20);
    EXPECT_EQ(ReceiveCall("7", 30)->askedMs, 10U);
    EXPECT_EQ(ReceiveCall("8", 40)->askedMs, 20U);
    SendClear("8", 50);
    Receive(kCleared, 60);
    ASSERT_EQ(history.Calls().size(), 2U);
    EXPECT_EQ(history.Calls()[0].callId, "7");
    EXPECT_EQ(history.Calls()[0].clearedMs, std::nullopt);
    EXPECT_EQ(history.Calls()[1].callId, "8");
    EXPECT_EQ(history.Calls()[1].clearedMs, 60U);
}

TEST_F(CallHistoryTest, TakesAnErrorForTheAnswerToTheOldestRequest) {
    Send("<MonitorStart/>", 10);
    SendCall("4930", 20);
    EXPECT_EQ(Receive(kError, 30)->name, "MonitorStart");
    EXPECT_FALSE(history.Calls()[0].answeredMs);
    EXPECT_EQ(Receive(kError, 40)->name, "MakeCall");
    EXPECT_TRUE(history.Calls()[0].refused);
    EXPECT_EQ(history.Calls()[0].answeredMs, 40U);
    EXPECT_EQ(history.Calls()[0].reason, "operation invalidCalledDevice");
}

TEST_F(CallHistoryTest, LeavesACallUnclearedWhoseClearingIsRefused) {
    SendCall("4930", 10);
    ReceiveCall("7", 20);
    SendClear("7", 30);
    EXPECT_EQ(Receive(kError, 40)->name, "ClearConnection");
    EXPECT_EQ(history.Calls()[0].clearedMs, std::nullopt);
    EXPECT_FALSE(history.Calls()[0].refused);
}

TEST_F(CallHistoryTest, ClearsTheLastCallThatBearsAnId) {
    for (const uint64_t atMs : {uint64_t{100}, uint64_t{200}}) {
        SendCall("4930", atMs);
        ReceiveCall("7", atMs + 1);
        SendClear("7", atMs + 2);
        Receive(kCleared, atMs + 3);
    }
    EXPECT_EQ(history.Calls()[0].clearedMs, 103U);
    EXPECT_EQ(history.Calls()[1].clearedMs, 203U);
}

TEST_F(CallHistoryTest, ClearsNoCallWithoutAnId) {
    SendCall("1", 10);
    SendClear("", 20);
    EXPECT_EQ(Receive(kCleared, 30)->name, "ClearConnection");
    EXPECT_EQ(history.Calls()[0].clearedMs, std::nullopt);
}

TEST_F(CallHistoryTest, TakesALoginForTheBeginOfANewLink) {
    SendCall("4930", 10);
    Send("<StartApplicationSession/>", 20);
    EXPECT_EQ(Receive(kError, 30)->name, "StartApplicationSession");
    EXPECT_EQ(history.Calls()[0].answeredMs, std::nullopt);
}

}  // namespace
}  // namespace velmora::ctl
