#include "tools/velmoractl/log_view.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

constexpr int32_t kAll = INT32_MAX;

const LogRecord kLogin = {20, 5,
                          "CSTA Tx: <?xml version=\"1.0\"?>\r\n<StartApplicationSession><applicationInfo>"
                          "<applicationSpecificInfo><t:SessionLoginInfo><t:userName>40</t:userName>"
                          "<t:password>se<b>cret</t:password></t:SessionLoginInfo></applicationSpecificInfo>"
                          "</applicationInfo></StartApplicationSession>\r\n"};
const LogRecord kMakeCall = {3723004, 5,
                             "CSTA Tx: <MakeCall>\r\n<callingDevice>40@example.com</callingDevice>\r\n"
                             "<calledDirectoryNumber>4930</calledDirectoryNumber></MakeCall>"};
const LogRecord kMakeCallResponse = {3723036, 5,
                                     "CSTA Rx: <MakeCallResponse><callingDevice><callID>7</callID>"
                                     "<deviceID>40@example.com</deviceID></callingDevice></MakeCallResponse>"};
const LogRecord kError = {3724005, 5, "CSTA Rx: <CSTAErrorCode><operation>generic</operation></CSTAErrorCode>"};

TEST(LogView, ShowsTimeLevelAndText) {
    LogView view(kAll, false);
    EXPECT_EQ(view.Show({0, 1, "TSPI_lineOpen"}), "0:00:00.000  1  TSPI_lineOpen\n");
    EXPECT_EQ(view.Show({90061001, -1, ""}), "25:01:01.001  -1 \n");
    EXPECT_EQ(view.Show({59999, 10, "x"}), "0:00:59.999  10 x\n");
}

TEST(LogView, SumsUpAMessageAndLaysItOut) {
    LogView view(kAll, false);
    EXPECT_EQ(view.Show(kMakeCall),
              "1:02:03.004  5  -> MakeCall: from 40@example.com to 4930\n"
              "                      <MakeCall>\n"
              "                        <callingDevice>40@example.com</callingDevice>\n"
              "                        <calledDirectoryNumber>4930</calledDirectoryNumber>\n"
              "                      </MakeCall>\n");
}

TEST(LogView, LeavesTheXmlOutWhenItIsToBeBrief) {
    LogView view(kAll, true);
    EXPECT_EQ(view.Show(kMakeCall), "1:02:03.004  5  -> MakeCall: from 40@example.com to 4930\n");
}

TEST(LogView, TellsWhatAMessageAnswers) {
    LogView view(kAll, true);
    view.Show(kMakeCall);
    EXPECT_EQ(view.Show(kMakeCallResponse),
              "1:02:03.036  5  <- MakeCallResponse: call 7 of device 40@example.com  (answers the MakeCall of "
              "1:02:03.004 after 32 ms)\n");
}

TEST(LogView, MasksThePassword) {
    LogView view(kAll, false);
    const ByteString shown = view.Show(kLogin);
    EXPECT_EQ(shown.find("cret"), ByteString::npos) << shown;
    EXPECT_NE(shown.find("<t:password>***</t:password>"), ByteString::npos) << shown;
    // One outside a message, too.
    EXPECT_EQ(view.Show({0, 5, "read <password>secret</password>"}), "0:00:00.000  5  read <password>***</password>\n");
}

TEST(LogView, PutsTlsIntoWords) {
    LogView view(kAll, false);
    const ByteString shown = view.Show({0, 2, "CSTA: Alert(2, 40)"});
    EXPECT_TRUE(shown.starts_with("0:00:00.000  2  CSTA: Alert(2, 40)  (The PBX ended TLS")) << shown;
}

TEST(LogView, ShowsRecordsUpToALevel) {
    LogView view(2, false);
    EXPECT_FALSE(view.Show({0, 1, "x"}).empty());
    EXPECT_FALSE(view.Show({0, 2, "x"}).empty());
    EXPECT_TRUE(view.Show({0, 3, "x"}).empty());
    EXPECT_TRUE(view.Show(kMakeCall).empty());
}

TEST(LogView, ShowsNothingThatCouldCommandATerminal) {
    LogView view(kAll, false);
    const ByteString shown = view.Show({0, 5, "CSTA Rx: <a>\x1b[2J</a>"});
    EXPECT_EQ(shown.find('\x1b'), ByteString::npos);
    EXPECT_EQ(view.Show({0, 1, "a\r\nb"}), "0:00:00.000  1  a??b\n");
}

TEST(LogView, ShowsAMessageThatIsNoXml) {
    LogView view(kAll, true);
    EXPECT_EQ(view.Show({0, 5, "CSTA Rx: nonsense"}), "0:00:00.000  5  <- (not readable as XML)\n");
}

TEST(LogView, ListsTheCalls) {
    LogView view(kAll, true);
    EXPECT_EQ(view.Calls(), "");
    view.Show(kMakeCall);
    EXPECT_EQ(view.Calls(), "Calls:\n1:02:03.004  4930 from 40@example.com: not answered\n");
    view.Show(kMakeCallResponse);
    EXPECT_EQ(view.Calls(),
              "Calls:\n1:02:03.004  4930 from 40@example.com: call 7 of device 40@example.com after 32 ms, "
              "not cleared\n");
    view.Show({3723900, 5,
               "CSTA Tx: <ClearConnection><connectionToBeCleared><callID>7</callID><deviceID>40@example.com</deviceID>"
               "</connectionToBeCleared></ClearConnection>"});
    view.Show({3724000, 5, "CSTA Rx: <ClearConnectionResponse/>"});
    EXPECT_TRUE(view.Calls().ends_with("after 32 ms, cleared at 1:02:04.000\n")) << view.Calls();
}

TEST(LogView, SaysWhyACallWasRefused) {
    LogView view(kAll, true);
    view.Show(kMakeCall);
    view.Show(kError);
    EXPECT_EQ(view.Calls(),
              "Calls:\n1:02:03.004  4930 from 40@example.com: refused after 1001 ms: operation generic\n");
}

TEST(LogView, ListsCallsWhoseMessagesAreAboveTheLevel) {
    LogView view(1, true);
    view.Show(kMakeCall);
    view.Show(kMakeCallResponse);
    EXPECT_NE(view.Calls().find("call 7 of device"), ByteString::npos);
}

}  // namespace
}  // namespace velmora::ctl
