#include "tools/velmoractl/csta_summary.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

ByteString Summary(const ByteString& xml) {
    return SummariseMessage(XmlNode(xml, true));
}

TEST(SummariseMessage, PutsACallIntoWords) {
    EXPECT_EQ(Summary("<MakeCall><callingDevice>40@example.com</callingDevice>"
                      "<calledDirectoryNumber>4930</calledDirectoryNumber></MakeCall>"),
              "from 40@example.com to 4930");
    EXPECT_EQ(Summary("<MakeCall><callingDevice>40@example.com</callingDevice><calledDirectoryNumber>4930"
                      "</calledDirectoryNumber><autoOriginate>doNotPrompt</autoOriginate></MakeCall>"),
              "from 40@example.com to 4930, originating with doNotPrompt");
}

TEST(SummariseMessage, PutsAnswersIntoWords) {
    EXPECT_EQ(Summary("<csta:MakeCallResponse><csta:callingDevice><csta:callID> 7 </csta:callID><csta:deviceID>40"
                      "</csta:deviceID></csta:callingDevice></csta:MakeCallResponse>"),
              "call 7 of device 40");
    EXPECT_EQ(Summary("<StartApplicationSessionPosResponse><sessionID>3</sessionID><actualSessionDuration>60"
                      "</actualSessionDuration></StartApplicationSessionPosResponse>"),
              "session 3, for 60 s");
}

TEST(SummariseMessage, LeavesOutWhatIsNotThere) {
    EXPECT_EQ(Summary("<StartApplicationSessionPosResponse><actualSessionDuration>60</actualSessionDuration>"
                      "</StartApplicationSessionPosResponse>"),
              "for 60 s");
    EXPECT_EQ(Summary("<ClearConnection><connectionToBeCleared><callID></callID><deviceID>40</deviceID>"
                      "</connectionToBeCleared></ClearConnection>"),
              "device 40");
    EXPECT_EQ(Summary("<MakeCall/>"), "");
}

TEST(SummariseMessage, GivesCallDeviceAndCauseOfAnEvent) {
    EXPECT_EQ(Summary("<DeliveredEvent><monitorCrossRefID>1</monitorCrossRefID><connection><callID>7</callID>"
                      "<deviceID>4930</deviceID></connection><alertingDevice><deviceID>x</deviceID></alertingDevice>"
                      "<cause>newCall</cause></DeliveredEvent>"),
              "callID 7, deviceID 4930, cause newCall");
}

TEST(SummariseMessage, GivesTheFieldsOfAnyOtherMessage) {
    EXPECT_EQ(Summary("<CSTAErrorCode><operation>invalidDestination</operation></CSTAErrorCode>"),
              "operation invalidDestination");
    EXPECT_EQ(Summary("<x><a>1</a><b><c>2</c></b></x>"), "a 1, c 2");
}

TEST(SummariseFields, AreCutWhenTheyAreLong) {
    const ByteString summary = SummariseFields(XmlNode("<x><a>" + ByteString(500, 'y') + "</a></x>", true));
    EXPECT_EQ(summary, "a " + ByteString(98, 'y') + "...");
}

TEST(SummariseFields, TakesAnyDepth) {
    ByteString xml = "<x>";
    for (int level = 0; level < 20000; ++level) xml += "<a>";
    xml += "deep";
    for (int level = 0; level < 20000; ++level) xml += "</a>";
    EXPECT_EQ(SummariseFields(XmlNode(xml + "</x>", true)), "a deep");
}

}  // namespace
}  // namespace velmora::ctl
