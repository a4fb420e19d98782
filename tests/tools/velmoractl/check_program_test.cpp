// "velmoractl check" as its user meets it: against pbxsim.exe, and against a PBX of the test's own where pbxsim cannot
// be made to fail so.

#include <algorithm>
#include <fstream>
#include <iterator>

#include "config/text_numbers.h"
#include "tests/support/csta_answers.h"
#include "tests/support/pbx_peer.h"
#include "tests/tools/velmoractl/velmoractl_test.h"

namespace velmora::ctl {
namespace {

class CheckTest : public VelmoractlTest {
protected:
    Ended CheckOver(const ByteString& pbxArguments, const ByteString& arguments = {}) {
        return RunOver(pbxArguments, "check " + arguments);
    }

    // A port on which nothing listens.
    static ByteString FreePort() { return RunningPbx("").port; }

    static void ExpectInOrder(const Ended& ended, std::initializer_list<const char*> texts) {
        auto line = ended.lines.begin();
        for (const char* text : texts) {
            line = std::find_if(line, ended.lines.end(),
                                [&](const ByteString& printed) { return printed.find(text) != ByteString::npos; });
            ASSERT_NE(line, ended.lines.end()) << text;
            ++line;
        }
    }

    static void ExpectFailure(const Ended& ended, DWORD exitCode, const ByteString& step, const ByteString& sentence) {
        EXPECT_EQ(ended.exitCode, exitCode);
        EXPECT_EQ(ended.LastLine(), "FAILED: " + sentence);
        const auto failed = std::ranges::find_if(ended.lines, [](const ByteString& line) {
            return line.starts_with("FAIL") && !line.starts_with("FAILED");
        });
        ASSERT_NE(failed, ended.lines.end());
        EXPECT_NE(failed->find(" ms  " + step + " "), ByteString::npos) << *failed;
        for (auto line = failed + 1; line != ended.lines.end() && !line->empty(); ++line) {
            EXPECT_TRUE(line->starts_with(" ") || (line->starts_with("- ") && line->ends_with("Not tried."))) << *line;
        }
    }
};

TEST_F(CheckTest, FindsAllWellInTheClear) {
    const Ended ended = CheckOver("");
    EXPECT_EQ(ended.exitCode, 0U);
    ExpectInOrder(ended, {" settings    Complete and well-formed.", " address     127.0.0.1 is an address.",
                          " connection  Connected to 127.0.0.1, port ",
                          "encryption  Off: everything, the password too, travels in the clear.",
                          " login       The PBX accepted 40@example.com: session 1, for 1800 s.",
                          " monitoring  The PBX monitors 40@example.com for the provider."});
    EXPECT_TRUE(ended.LastLine().starts_with("OK: the PBX at 127.0.0.1:")) << ended.LastLine();
    EXPECT_TRUE(ended.LastLine().ends_with(" accepts and monitors 40@example.com.")) << ended.LastLine();
    EXPECT_TRUE(PbxPrinted("MonitorStart"));
    EXPECT_FALSE(PbxPrinted("MakeCall"));
}

TEST_F(CheckTest, FindsAllWellOverTls) {
    encrypt = "1";
    const Ended ended = CheckOver("--tls --cert " VELMORA_IDENTITIES "/rsa1024.der --key " VELMORA_IDENTITIES
                                  "/rsa1024_key.der --split 7");
    EXPECT_EQ(ended.exitCode, 0U);
    ExpectInOrder(ended, {" encryption  TLS 1.0 with TLS_RSA_WITH_AES_128_CBC_SHA; certificate \"pbx.velmora.example\","
                          " its RSA key has 1024 bits.",
                          "The PBX is not authenticated", "less than 2048 bits is weak", "ok ", "ok "});
    EXPECT_TRUE(PbxPrinted("-- encrypted: TLS 1.0, AES128-SHA, new session"));
}

TEST_F(CheckTest, PlacesACallAndClearsIt) {
    const Ended ended = CheckOver("--events", "--dial \"+49 (30)\"");
    EXPECT_EQ(ended.exitCode, 0U);
    ExpectInOrder(ended, {" call        4930 was called; the PBX bound it as call 1 of device 40@example.com.",
                          " clearing    The call was cleared."});
    EXPECT_TRUE(ended.LastLine().ends_with("; 4930 was called, and the call cleared.")) << ended.LastLine();
    EXPECT_TRUE(PbxPrinted("ClearConnection"));
}

TEST_F(CheckTest, LetsThePbxDialAtOnceWhenTheSettingSaysSo) {
    registry.Set("autooriginate", "1");
    EXPECT_EQ(CheckOver("", "--dial 1").exitCode, 0U);
    EXPECT_TRUE(PbxPrinted("doNotPrompt"));
}

TEST_F(CheckTest, PrintsOneJsonObjectAndNothingElse) {
    const Ended good = CheckOver("", "--json --dial 1");
    EXPECT_EQ(good.exitCode, 0U);
    ASSERT_EQ(good.lines.size(), 1U);
    EXPECT_TRUE(good.lines[0].starts_with(R"({"result": "ok", "exitCode": 0, "sentence": "OK: )")) << good.lines[0];
    EXPECT_TRUE(good.Printed(R"("sessionSeconds": 1800)"));
    EXPECT_TRUE(good.Printed(R"("callId": "1", "callDevice": "40@example.com")"));
    const Ended bad = CheckOver("--reject-login", "--json");
    EXPECT_EQ(bad.exitCode, 6U);
    ASSERT_EQ(bad.lines.size(), 1U);
    EXPECT_TRUE(bad.lines[0].starts_with(R"({"result": "failed", "exitCode": 6, )")) << bad.lines[0];
    EXPECT_TRUE(bad.Printed(R"({"name": "monitoring", "state": "skipped", "milliseconds": 0)"));
}

TEST_F(CheckTest, NamesEverySettingThatStopsTheProviderWithItsFix) {
    StoreSettings("abc");
    registry.Set("autooriginate", "maybe");
    registry.Set("username", "");
    const Ended ended = RunCtl("check");
    ExpectFailure(ended, 4, "settings",
                  "username is not set. port \"abc\" is no number. The provider does not load with it. autooriginate "
                  "\"maybe\" is no number. The provider does not load with it.");
    EXPECT_TRUE(
        ended.Printed("Mend it with: velmoractl config set username USERNAME; velmoractl config set port 443; "
                      "velmoractl config set autooriginate 0"));
}

TEST_F(CheckTest, AsksForTheSettingsThatAreMissing) {
    ExpectFailure(RunCtl("check"), 4, "settings", "username is not set. address is not set.");
}

TEST_F(CheckTest, FindsThatTheNameHasNoAddress) {
    StoreSettings("443");
    registry.Set("address", "pbx.invalid");
    const Ended ended = RunCtl("check");
    ExpectFailure(ended, 12, "address", "the name pbx.invalid does not resolve to an address.");
    EXPECT_TRUE(ended.Printed("nslookup pbx.invalid"));
}

TEST_F(CheckTest, ShowsWhatTheNameStandsFor) {
    RunningPbx pbx("");
    StoreSettings(pbx.port);
    registry.Set("address", "localhost");
    const Ended ended = RunCtl("check");
    EXPECT_TRUE(ended.Printed(" address     localhost is 127.0.0.1") || ended.Printed(" address     localhost is ::1"));
}

TEST_F(CheckTest, FindsThatNothingListens) {
    const ByteString port = FreePort();
    StoreSettings(port);
    ExpectFailure(RunCtl("check"), 5, "connection",
                  "the connection to 127.0.0.1, port " + port + ", was refused: nothing listens there.");
}

TEST_F(CheckTest, FindsThatThePbxDoesNotSpeakTls) {
    encrypt = "1";
    const Ended ended = CheckOver("");
    ExpectFailure(ended, 11, "encryption", "the PBX closed the connection instead of completing TLS.");
    EXPECT_TRUE(ended.Printed("velmoractl config set encrypt off"));
}

TEST_F(CheckTest, NamesTheAlertWithWhichThePbxRefusesTls) {
    encrypt = "1";
    ExpectFailure(CheckOver("--tls --tls-refuse"), 11, "encryption",
                  "the PBX ended TLS with the alert handshake_failure (40).");
}

TEST_F(CheckTest, FindsThatThePbxDoesNotCompleteTls) {
    encrypt = "1";
    const PbxPeer pbx;
    StoreSettings(DecimalText(pbx.Port()));
    ExpectFailure(RunCtl("check --timeout 1"), 11, "encryption", "the PBX did not complete TLS within 1 s.");
}

TEST_F(CheckTest, FindsThatThePbxIsSilentBehindTls) {
    encrypt = "1";
    RunningPbx pbx("--tls --silent");
    StoreSettings(pbx.port);
    const Ended ended = RunCtl("check --timeout 1");
    ExpectFailure(ended, 6, "login", "the PBX at 127.0.0.1:" + pbx.port + " did not answer the login within 1 s.");
    EXPECT_TRUE(ended.Printed("Is CSTA switched on at the PBX for this port?"));
}

TEST_F(CheckTest, FindsThatSomethingElseListens) {
    encrypt = "1";
    PbxPeer web;
    StoreSettings(DecimalText(web.Port()));
    ChildProcess check("velmoractl.exe", "check");
    ASSERT_TRUE(web.WaitForBytes(1));
    ASSERT_TRUE(web.Send("HTTP/1.1 400 Bad Request\r\n\r\n"));
    web.Close();
    ExpectFailure(ToEnd(check), 11, "encryption",
                  "the answer on port " + DecimalText(web.Port()) +
                      " is not TLS: it begins with \"HTTP/1.1 400 Bad Request????\".");
}

TEST_F(CheckTest, FindsThatThePbxWantsTls) {
    PbxPeer pbx;
    StoreSettings(DecimalText(pbx.Port()));
    ChildProcess check("velmoractl.exe", "check");
    ASSERT_TRUE(pbx.WaitForBytes(1));
    ASSERT_TRUE(pbx.Send(ByteString("\x15\x03\x01\x00\x02\x02\x0A", 7)));  // unexpected_message
    pbx.Close();
    const Ended ended = ToEnd(check);
    ExpectFailure(ended, 6, "login", "the PBX answers in TLS, but encryption is off.");
    EXPECT_TRUE(ended.Printed("velmoractl config set encrypt on"));
}

TEST_F(CheckTest, AdvisesTlsWhenThePbxClosesAPlainConnection) {
    const Ended ended = CheckOver("--tls");
    ExpectFailure(ended, 6, "login", "the PBX closed the connection instead of answering the login.");
    EXPECT_TRUE(ended.Printed("does the PBX want TLS on this port? Then: velmoractl config set encrypt on"));
}

TEST_F(CheckTest, GivesTheRefusalOfTheLoginInThePbxsWords) {
    RunningPbx pbx("--password other");
    StoreSettings(pbx.port);
    const Ended ended = RunCtl("check");
    ExpectFailure(ended, 6, "login",
                  "the PBX refused the login of 40@example.com (definedError invalidApplicationInfo).");
    EXPECT_TRUE(ended.Printed("velmoractl config set password"));
}

TEST_F(CheckTest, FindsThatThePbxIsSilent) {
    RunningPbx pbx("--silent");
    StoreSettings(pbx.port);
    ExpectFailure(RunCtl("check --timeout 1"), 6, "login",
                  "the PBX at 127.0.0.1:" + pbx.port + " did not answer the login within 1 s.");
}

TEST_F(CheckTest, FindsThatThePbxRefusesToMonitor) {
    RunningPbx pbx("");
    StoreSettings(pbx.port);
    registry.Set("domain", ByteString(300, 'x'));  // more than pbxsim takes for a device
    ExpectFailure(RunCtl("check --dial 1"), 13, "monitoring",
                  "the PBX refused to monitor 40@" + ByteString(300, 'x') + " (operation invalidDeviceID).");
}

TEST_F(CheckTest, GoesOnWithoutMonitoringWhenThePbxGrantsNoTime) {
    const Ended ended = CheckOver("--session-duration 0", "--dial 1");
    EXPECT_EQ(ended.exitCode, 0U);
    ExpectInOrder(ended, {"The PBX accepted 40@example.com: session 1.", "-  ", "ok ", "ok "});
    EXPECT_TRUE(ended.Printed("monitoring  Not asked for"));
    EXPECT_FALSE(PbxPrinted("MonitorStart"));
}

TEST_F(CheckTest, FindsThatThePbxRefusesTheCall) {
    const Ended ended = CheckOver("--error-on-makecall", "--dial 4930");
    ExpectFailure(ended, 7, "call", "the PBX refused the call to 4930 (operation generic).");
    EXPECT_TRUE(ended.Printed("clearing    Not tried."));
}

// A PBX that answers every request but one, and never the clearing of a call.
class LazyPbx {
public:
    explicit LazyPbx(const ByteString& unansweredRequest) : unanswered(unansweredRequest) {
        peer.onFrame = [this](const ReceivedFrame& frame) { Answer(frame); };
    }

    PbxPeer peer;
    uint32_t answerOffset = 0;  // added to the number under which a call is answered

private:
    void Answer(const ReceivedFrame& frame) {
        const auto is = [&](const ByteString& name) {
            return name != unanswered && frame.xml.find("<" + name + " ") != ByteString::npos;
        };
        if (is("StartApplicationSession")) peer.SendFrame(frame.invokeId, SessionAccepted("9", "60"));
        if (is("MonitorStart")) peer.SendFrame(frame.invokeId, "<MonitorStartResponse/>");
        if (is("MakeCall")) peer.SendFrame(frame.invokeId + answerOffset, CallMade("7", "40"));
    }

    ByteString unanswered;
};

TEST_F(CheckTest, FindsThatMonitoringIsNotConfirmed) {
    const LazyPbx pbx("MonitorStart");
    StoreSettings(DecimalText(pbx.peer.Port()));
    ExpectFailure(RunCtl("check --timeout 1 --dial 1"), 13, "monitoring",
                  "the PBX did not confirm that it monitors 40@example.com within 1 s.");
}

TEST_F(CheckTest, FindsThatTheCallIsNotAnswered) {
    const LazyPbx pbx("MakeCall");
    StoreSettings(DecimalText(pbx.peer.Port()));
    ExpectFailure(RunCtl("check --timeout 1 --dial 4930"), 8, "call",
                  "the PBX did not answer the request to call 4930 within 1 s.");
}

TEST_F(CheckTest, FindsThatTheCallIsAnsweredUnderAnotherNumber) {
    LazyPbx pbx("none");
    pbx.answerOffset = 1;
    StoreSettings(DecimalText(pbx.peer.Port()));
    ExpectFailure(RunCtl("check --timeout 1 --dial 4930"), 8, "call",
                  "the PBX answered the call under the number of another request.");
}

TEST_F(CheckTest, FindsThatTheCallIsNotCleared) {
    LazyPbx pbx("none");
    StoreSettings(DecimalText(pbx.peer.Port()));
    const Ended ended = RunCtl("check --timeout 1 --dial 4930");
    ExpectFailure(ended, 14, "clearing", "the PBX did not confirm that it cleared the call within 1 s.");
    EXPECT_TRUE(ended.Printed("look at the phone of 40@example.com"));
    const ReceivedFrame last = pbx.peer.WaitForFrame(3);
    EXPECT_NE(last.xml.find("<callID>7</callID>"), ByteString::npos) << last.xml;
}

TEST_F(CheckTest, NeverShowsThePassword) {
    // A PBX that says back what it was sent.
    PbxPeer pbx;
    pbx.onFrame = [&](const ReceivedFrame& frame) {
        pbx.SendFrame(frame.invokeId, "<StartApplicationSessionNegResponse><password>" +
                                          ElementText(frame.xml, "tns:password") +
                                          "</password></StartApplicationSessionNegResponse>");
    };
    StoreSettings(DecimalText(pbx.Port()));
    for (const char* arguments : {"check", "check --json"}) {
        const Ended ended = RunCtl(arguments);
        EXPECT_EQ(ended.exitCode, 6U);
        EXPECT_TRUE(ended.Printed("(password ***)"));
        EXPECT_FALSE(ended.Printed(kUserPassword));
    }
}

// The provider would write about the missing guid.
TEST_F(CheckTest, LeavesTheTraceLogAlone) {
    const ByteString path = "velmoractl_check_test.log";
    std::ofstream(path) << "the provider's";
    registry.Set("logfile", path);
    registry.Set("loglevel", "9");
    RunningPbx pbx("");
    StoreSettings(pbx.port);
    registry.RemoveValue("guid");
    EXPECT_EQ(RunCtl("check").exitCode, 0U);
    std::ifstream file(path);
    EXPECT_EQ(ByteString(std::istreambuf_iterator<char>(file), {}), "the provider's");
    file.close();
    EXPECT_EQ(DeleteFileA(path.c_str()), TRUE);
}

TEST_F(CheckTest, RefusesAWrongCommandLine) {
    for (const char* arguments : {"check 4930", "check --dial abc", "check --dial", "check --timeout x"}) {
        const Ended ended = RunCtl(arguments);
        EXPECT_EQ(ended.exitCode, 2U) << arguments;
        EXPECT_TRUE(ended.Printed("Try: velmoractl check --help")) << arguments;
    }
}

}  // namespace
}  // namespace velmora::ctl
