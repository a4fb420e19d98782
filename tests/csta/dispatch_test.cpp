#include "csta/dispatch.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "config/settings.h"
#include "tests/support/recorded_link.h"

namespace velmora {
namespace {

struct BoundCall {
    uint32_t invokeId;
    ByteString callId;
    ByteString deviceId;
    bool operator==(const BoundCall&) const = default;
};

std::vector<BoundCall> boundCalls;

class DispatchTest : public testing::Test {
protected:
    DispatchTest() {
        recordedLink = {};
        boundCalls.clear();
        settings = {};
        settings.username = "40";
        settings.domain = "example.com";
    }

    static void Receive(uint32_t invokeId, const ByteString& xml) {
        Dispatch(invokeId, xml, [](uint32_t id, const ByteString& callId, const ByteString& deviceId) {
            boundCalls.push_back({id, callId, deviceId});
        });
    }

    static void ExpectNoEffect() {
        EXPECT_TRUE(recordedLink.sent.empty());
        EXPECT_TRUE(recordedLink.armed.empty());
        EXPECT_TRUE(boundCalls.empty());
    }
};

ByteString SessionStarted(const ByteString& duration) {
    return "<StartApplicationSessionPosResponse><sessionID>s1</sessionID><actualSessionDuration>" + duration +
           "</actualSessionDuration></StartApplicationSessionPosResponse>";
}

ByteString SessionRenewed(const ByteString& duration) {
    return "<ResetApplicationSessionTimerPosResponse><actualSessionDuration>" + duration +
           "</actualSessionDuration></ResetApplicationSessionTimerPosResponse>";
}

TEST_F(DispatchTest, ArmsTheKeepaliveAndMonitorsTheUsersDeviceWhenTheSessionStarts) {
    Receive(1, SessionStarted("1800"));
    EXPECT_EQ(recordedLink.armed, (std::vector<RecordedLink::Armed>{{"s1", 1800}}));
    ASSERT_EQ(recordedLink.sent.size(), 1U);
    EXPECT_NE(recordedLink.sent[0].find("<MonitorStart "), ByteString::npos);
    EXPECT_NE(recordedLink.sent[0].find("<deviceObject>40@example.com</deviceObject>"), ByteString::npos);
}

TEST_F(DispatchTest, ArmsWithoutASessionIdWhenThePbxNamesNone) {
    Receive(1,
            "<StartApplicationSessionPosResponse><actualSessionDuration>60</actualSessionDuration>"
            "</StartApplicationSessionPosResponse>");
    EXPECT_EQ(recordedLink.armed, (std::vector<RecordedLink::Armed>{{"", 60}}));
}

TEST_F(DispatchTest, DoesNothingForADurationOfZeroOrLess) {
    for (const char* duration : {"0", "-1", "-1800"}) {
        Receive(1, SessionStarted(duration));
        Receive(1, SessionRenewed(duration));
    }
    ExpectNoEffect();
}

TEST_F(DispatchTest, ThrowsWhenTheDurationIsNoNumber) {
    for (const char* duration : {"", "soon", " "}) {
        EXPECT_THROW(Receive(1, SessionStarted(duration)), std::invalid_argument);
        EXPECT_THROW(Receive(1, SessionRenewed(duration)), std::invalid_argument);
    }
    EXPECT_THROW(Receive(1, "<StartApplicationSessionPosResponse/>"), std::invalid_argument);
    EXPECT_THROW(Receive(1, SessionStarted("99999999999")), std::out_of_range);
    EXPECT_THROW(Receive(1, SessionRenewed("99999999999")), std::out_of_range);
    ExpectNoEffect();
}

TEST_F(DispatchTest, ReArmsWithTheStoredSessionWhenItIsRenewed) {
    Receive(2, SessionRenewed(" 90 s"));
    EXPECT_EQ(recordedLink.armed, (std::vector<RecordedLink::Armed>{{"", 90}}));
    EXPECT_TRUE(recordedLink.sent.empty());
}

TEST_F(DispatchTest, BindsACallUnderTheInvokeIdOfItsFrame) {
    Receive(77,
            "<MakeCallResponse><callingDevice><callID>7</callID><deviceID>40@example.com</deviceID>"
            "</callingDevice></MakeCallResponse>");
    EXPECT_EQ(boundCalls, (std::vector<BoundCall>{{77, "7", "40@example.com"}}));
}

TEST_F(DispatchTest, BindsEmptyTextsForWhatThePbxDoesNotName) {
    Receive(3, "<MakeCallResponse/>");
    EXPECT_EQ(boundCalls, (std::vector<BoundCall>{{3, "", ""}}));
}

TEST_F(DispatchTest, KnowsTheRootByItsLocalName) {
    Receive(3, R"(<?xml version="1.0"?><csta:MakeCallResponse xmlns:csta="x"><csta:callingDevice><csta:callID>8)"
               "</csta:callID></csta:callingDevice></csta:MakeCallResponse>");
    EXPECT_EQ(boundCalls, (std::vector<BoundCall>{{3, "8", ""}}));
}

TEST_F(DispatchTest, ComparesNamesCaseSensitively) {
    Receive(3, "<makecallresponse><callingDevice><callID>8</callID></callingDevice></makecallresponse>");
    ExpectNoEffect();
}

TEST_F(DispatchTest, IgnoresEventsErrorsAndWhatItDoesNotKnow) {
    for (const char* xml :
         {"<ClearConnectionResponse/>", "<CSTAErrorCode><operation>invalidDeviceID</operation></CSTAErrorCode>",
          "<MonitorStartResponse><monitorCrossRefID>1</monitorCrossRefID></MonitorStartResponse>",
          "<DeliveredEvent><connection><callID>7</callID></connection></DeliveredEvent>",
          "<StartApplicationSessionNegResponse/>", "<unknown/>", "", "no markup", "<", "<MakeCallResponse2/>"}) {
        Receive(1, xml);
    }
    ExpectNoEffect();
}

}  // namespace
}  // namespace velmora
