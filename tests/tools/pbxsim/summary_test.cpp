#include "tools/pbxsim/summary.h"

#include <gtest/gtest.h>

#include "tests/tools/pbxsim/requests.h"
#include "tools/pbxsim/messages.h"

namespace velmora::pbxsim {
namespace {

ByteString SummaryOf(const ByteString& xml) {
    return Summary(XmlNode(xml, true));
}

TEST(Summary, SaysWhatMattersInAMessage) {
    const Call call{"7", "40@example.com", "100"};
    const ByteString ns = CstaNamespace(5);
    const struct {
        ByteString xml;
        const char* summary;
    } cases[] = {
        {Login(), "user 40, domain example.com"},
        {StartApplicationSessionPosResponse("9", ns, 1800), "session 9, for 1800 s"},
        {StartApplicationSessionNegResponse("invalidApplicationInfo"), "invalidApplicationInfo"},
        {ResetTimer("9"), "session 9"},
        {ResetApplicationSessionTimerPosResponse(60), "for 60 s"},
        {ResetApplicationSessionTimerNegResponse("invalidSessionID"), "invalidSessionID"},
        {ApplicationSessionTerminated("9", "sessionTimerExpired"), "session 9"},
        {MonitorStart("40@example.com"), "device 40@example.com"},
        {MonitorStartResponse(ns, "3"), "monitor 3"},
        {MakeCall("40@example.com", "100"), "from 40@example.com, to 100"},
        {MakeCall("40", "1", "doNotPrompt"), "from 40, to 1, autoOriginate doNotPrompt"},
        {MakeCallResponse(ns, call), "call 7, device 40@example.com"},
        {ClearConnection("7", "40"), "call 7, device 40"},
        {ClearConnectionResponse(ns), ""},
        {CstaErrorCode(ns, "generic"), "generic"},
        {ServiceInitiatedEvent(ns, "3", call), "call 7"},
        {OriginatedEvent(ns, "3", call), "call 7, to 100"},
        {DeliveredEvent(ns, "3", call), "call 7, rings at 100"},
        {EstablishedEvent(ns, "3", call), "call 7, answered by 100"},
        {ConnectionClearedEvent(ns, "3", call), "call 7"},
        {"<Other><callID>7</callID></Other>", ""},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.xml);
        EXPECT_EQ(SummaryOf(each.xml), each.summary);
    }
}

TEST(Summary, StaysOnOneLineWhateverTheValue) {
    EXPECT_EQ(SummaryOf(MonitorStart("a\r\n12:00 1 -> forged\x1B[2J")), "device a??12:00 1 -> forged?[2J");
}

TEST(MessageName, IsTheLocalName) {
    EXPECT_EQ(MessageName(XmlNode("<csta:MakeCall/>", true)), "MakeCall");
    EXPECT_EQ(MessageName(XmlNode("hello", true)), "(no XML)");
}

TEST(OneLine, CutsALongText) {
    EXPECT_EQ(OneLine(ByteString(60, 'x')), ByteString(60, 'x'));
    EXPECT_EQ(OneLine(ByteString(61, 'x')), ByteString(60, 'x') + "...");
}

}  // namespace
}  // namespace velmora::pbxsim
