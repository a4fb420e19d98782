#include "tools/velmoractl/verdict.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

class VerdictTest : public testing::Test {
protected:
    VerdictTest() {
        facts.number = "49301234";
        facts.device = "40@example.com";
        facts.peer = "127.0.0.1:443";
        facts.connected = true;
        facts.logVisible = true;
        facts.callPlaced = true;
        facts.timeoutSeconds = 10;
        exchange.login = Granted();
        exchange.call = Granted();
        exchange.clear = Granted();
        exchange.callId = "7";
        exchange.deviceId = "40@example.com";
    }

    static PbxRequest Granted() { return {PbxRequest::State::kGranted, {}}; }
    static PbxRequest Refused(const ByteString& reason) { return {PbxRequest::State::kRefused, reason}; }
    static PbxRequest Sent() { return {PbxRequest::State::kSent, {}}; }

    void Expect(ExitCode code, const ByteString& sentence) const {
        const Verdict verdict = JudgeCall(facts, exchange);
        EXPECT_EQ(verdict.code, code);
        EXPECT_EQ(verdict.sentence, sentence);
        EXPECT_EQ(verdict.sentence.find('\n'), ByteString::npos);
    }

    CallFacts facts;
    PbxExchange exchange;
};

TEST_F(VerdictTest, IsOkForACallThatWasBoundAndClosed) {
    Expect(ExitCode::kDone,
           "OK: 49301234 was called; the PBX bound it as call 7 of device 40@example.com; the call was closed.");
}

TEST_F(VerdictTest, SaysWhenTheClosingWasNotConfirmed) {
    exchange.clear = Sent();
    Expect(ExitCode::kDone,
           "OK: 49301234 was called; the PBX bound it as call 7 of device 40@example.com; the PBX did not confirm that "
           "it was closed within 10 s.");
    exchange.clear = Refused("operation invalidConnectionID");
    Expect(ExitCode::kDone,
           "OK: 49301234 was called; the PBX bound it as call 7 of device 40@example.com; the PBX refused to close it "
           "(operation invalidConnectionID).");
}

TEST_F(VerdictTest, SaysWhenTheCallHasNoId) {
    exchange.callId = "";
    exchange.deviceId = "";
    Expect(ExitCode::kDone,
           "OK: 49301234 was called; the PBX bound it as a call without an ID of device 40@example.com; the call was "
           "closed.");
}

TEST_F(VerdictTest, IsNoConnectionBeforeAnythingElse) {
    facts.connected = false;
    exchange.login = Refused("");
    Expect(ExitCode::kNoConnection, "FAILED: there is no connection to the PBX at 127.0.0.1:443.");
}

TEST_F(VerdictTest, IsNoLoginWhenItIsRefusedOrNotAnswered) {
    exchange.login = Refused("definedError invalidApplicationInfo");
    Expect(ExitCode::kNoLogin,
           "FAILED: the PBX refused the login of 40@example.com (definedError invalidApplicationInfo).");
    exchange.login = Sent();
    Expect(ExitCode::kNoLogin, "FAILED: the PBX at 127.0.0.1:443 did not answer the login within 10 s.");
}

TEST_F(VerdictTest, AdvisesOnEncryptionWhenTheLoginIsNotAnswered) {
    exchange.login = Sent();
    EXPECT_NE(JudgeCall(facts, exchange).advice.find("encrypt on"), ByteString::npos);
    facts.encrypted = true;
    EXPECT_NE(JudgeCall(facts, exchange).advice.find("encrypt off"), ByteString::npos);
}

TEST_F(VerdictTest, IsNoEncryptionWhenTlsHasFailedBeforeAnAnswer) {
    const ByteString sentence =
        "FAILED: the encryption of the link to the PBX at 127.0.0.1:443 has failed: the PBX refused.";
    facts.tlsFailure = {"the PBX refused", "Ask it."};
    exchange.call = Sent();
    Expect(ExitCode::kNoEncryption, sentence);
    exchange.login = Sent();
    Expect(ExitCode::kNoEncryption, sentence);
    EXPECT_EQ(JudgeCall(facts, exchange).advice, "Ask it.");
}

TEST_F(VerdictTest, IsOkWhenTlsFailsAfterTheCallIsBound) {
    facts.tlsFailure = {"the PBX refused", "Ask it."};
    exchange.clear = Sent();
    EXPECT_EQ(JudgeCall(facts, exchange).code, ExitCode::kDone);
}

TEST_F(VerdictTest, IsCallRefusedByThePbxOrTheProvider) {
    exchange.call = Refused("operation invalidDestination");
    Expect(ExitCode::kCallRefused, "FAILED: the PBX refused the call to 49301234 (operation invalidDestination).");
    facts.callPlaced = false;
    facts.makeCallCode = static_cast<int32_t>(0x80000005);
    Expect(ExitCode::kCallRefused,
           "FAILED: the provider did not take the call to 49301234: LINEERR_CALLUNAVAIL (0x80000005).");
}

TEST_F(VerdictTest, IsCallNotAnsweredWhenNothingComes) {
    exchange.call = Sent();
    Expect(ExitCode::kCallNotAnswered, "FAILED: the PBX did not answer the request to call 49301234 within 10 s.");
}

TEST_F(VerdictTest, IsUnknownWithoutTheLog) {
    facts.logVisible = false;
    exchange.login = {};
    exchange.call = {};
    Expect(ExitCode::kNotVisible,
           "UNKNOWN: the call to 49301234 was handed to the provider, but the PBX's answer cannot be seen.");
}

TEST_F(VerdictTest, ShowsNoControlCharacterOfThePbx) {
    exchange.callId = "7\x1b[2J\r\n";
    Expect(ExitCode::kDone,
           "OK: 49301234 was called; the PBX bound it as call 7?[2J?? of device 40@example.com; the call was closed.");
}

}  // namespace
}  // namespace velmora::ctl
