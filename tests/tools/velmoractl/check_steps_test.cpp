#include "tools/velmoractl/check_steps.h"

#include <gtest/gtest.h>

#include "tests/support/memory_registry.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"

namespace velmora::ctl {
namespace {

class CheckStepsTest : public testing::Test {
protected:
    CheckStepsTest() {
        memoryRegistry = {};
        for (const auto& [name, text] : {std::pair("username", "40"), std::pair("password", "secret"),
                                         std::pair("domain", "example.com"), std::pair("address", "pbx.example.com")}) {
            Store(name, text);
        }
        facts.address = "pbx.example.com";
        facts.port = 443;
        facts.device = "40@example.com";
        facts.timeoutSeconds = 10;
        facts.endpoints = {"192.0.2.1"};
        facts.number = "4930";
    }

    static void Store(const ByteString& name, const ByteString& text) {
        memoryRegistry.values[name] = StoredText(text);
    }

    void Exchange(const ByteString& sent, const ByteString& received = {}) {
        exchange.Observe(true, XmlNode("<" + sent + "/>", true));
        if (!received.empty()) exchange.Observe(false, XmlNode(received, true));
    }

    static void ExpectFailed(const CheckStep& step, ExitCode code, const ByteString& sentence) {
        EXPECT_EQ(step.state, StepState::kFailed);
        EXPECT_EQ(step.code, code);
        EXPECT_EQ(step.sentence, sentence);
    }

    static void ExpectOk(const CheckStep& step, const ByteString& sentence) {
        EXPECT_EQ(step.state, StepState::kOk);
        EXPECT_EQ(step.sentence, sentence);
        EXPECT_EQ(step.advice, "");
    }

    CheckFacts facts;
    PbxExchange exchange;
    TlsConnection tls;
};

TEST_F(CheckStepsTest, SettingsAreFineWithTheDefaultsOfTheRest) {
    const CheckStep step = SettingsStep();
    ExpectOk(step, "Complete and well-formed.");
    EXPECT_TRUE(step.notes.empty());
}

TEST_F(CheckStepsTest, SettingsNameWhatIsWrongAndHowToMendIt) {
    Store("port", "70000");
    Store("loglevel", "x");
    Store("guid", "xyz");
    const CheckStep step = SettingsStep();
    ExpectFailed(step, ExitCode::kBadSettings,
                 "port \"70000\" is no TCP port (1 to 65535). loglevel \"x\" is no number. The provider does not load "
                 "with it. guid \"xyz\" is too short for a GUID. The provider does not load with it.");
    EXPECT_EQ(step.advice,
              "Mend it with: velmoractl config set port 443; velmoractl config set loglevel 0; "
              "velmoractl config set guid xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx");
}

TEST_F(CheckStepsTest, SettingsTakeAListOfTextsAsTheProviderDoes) {
    memoryRegistry.values["port"] = {RegistryStatus::kDone, true, ByteString("\0\0", 2)};
    ExpectFailed(SettingsStep(), ExitCode::kBadSettings,
                 "port \"??\" is no number. The provider does not load with it.");
}

TEST_F(CheckStepsTest, SettingsNoteWhatIsHardlyWanted) {
    Store("domain", "");
    memoryRegistry.values.erase("password");
    Store("username", "a<b");
    const CheckStep step = SettingsStep();
    EXPECT_EQ(step.state, StepState::kOk);
    ASSERT_EQ(step.notes.size(), 3U);
    EXPECT_TRUE(step.notes[0].starts_with("username holds a \"<\" or \"&\": ")) << step.notes[0];
    EXPECT_EQ(step.notes[1], "password is not set. If the PBX wants one: velmoractl config set password");
    EXPECT_EQ(step.notes[2], "domain is not set. If the PBX wants one: velmoractl config set domain DOMAIN");
}

TEST_F(CheckStepsTest, SettingsNeverShowThePassword) {
    Store("password", "sec<ret");
    const CheckStep step = SettingsStep();
    ASSERT_EQ(step.notes.size(), 1U);
    EXPECT_EQ(step.notes[0].find("sec<ret"), ByteString::npos);
}

TEST_F(CheckStepsTest, AddressGivesEveryEndpoint) {
    ExpectOk(AddressStep(facts), "pbx.example.com is 192.0.2.1.");
    EXPECT_TRUE(AddressStep(facts).notes.empty());
    facts.endpoints = {"192.0.2.1", "2001:db8::1"};
    ExpectOk(AddressStep(facts), "pbx.example.com is 192.0.2.1, 2001:db8::1.");
    EXPECT_EQ(AddressStep(facts).notes, (std::vector<ByteString>{"The provider tries the first of them alone."}));
    facts.address = "192.0.2.1";
    facts.endpoints = {"192.0.2.1"};
    ExpectOk(AddressStep(facts), "192.0.2.1 is an address.");
    facts.endpoints = {};
    ExpectFailed(AddressStep(facts), ExitCode::kNotResolved, "The name 192.0.2.1 does not resolve to an address.");
}

TEST_F(CheckStepsTest, ConnectionPutsWindowsErrorsIntoWords) {
    ExpectOk(ConnectionStep(facts, 0), "Connected to 192.0.2.1, port 443.");
    const struct {
        int error;
        const char* sentence;
    } kErrors[] = {{10061, "The connection to 192.0.2.1, port 443, was refused: nothing listens there."},
                   {10060, "The PBX at 192.0.2.1, port 443, does not answer."},
                   {10051, "The network has no way from this PC to 192.0.2.1, port 443."},
                   {10065, "The network has no way from this PC to 192.0.2.1, port 443."},
                   {10055, "The connection to 192.0.2.1, port 443, failed: Windows gives error 10055."}};
    for (const auto& [error, sentence] : kErrors) {
        const CheckStep step = ConnectionStep(facts, error);
        ExpectFailed(step, ExitCode::kNoConnection, sentence);
        EXPECT_FALSE(step.advice.empty());
    }
}

TEST_F(CheckStepsTest, EncryptionIsSkippedWhenItIsOff) {
    const CheckStep step = EncryptionStep(facts, tls, WaitEnd::kAnswered, "");
    EXPECT_EQ(step.state, StepState::kSkipped);
    EXPECT_EQ(step.sentence, "Off: everything, the password too, travels in the clear.");
}

TEST_F(CheckStepsTest, EncryptionTellsWhatItIsWorth) {
    facts.encrypted = true;
    const auto step = [&](const ByteString& identity) {
        UseTlsIdentity(identity);
        TlsPair pair;
        pair.Handshake();
        return EncryptionStep(facts, pair.client, WaitEnd::kAnswered, "");
    };
    const ByteString unauthenticated = "The PBX is not authenticated: the provider accepts any certificate.";
    ExpectOk(
        step("rsa2048"),
        "TLS 1.0 with TLS_RSA_WITH_AES_128_CBC_SHA; certificate \"pbx.velmora.example\", its RSA key has 2048 bits.");
    EXPECT_EQ(step("rsa2048").notes, (std::vector<ByteString>{unauthenticated}));
    EXPECT_EQ(step("rsa1024").notes,
              (std::vector<ByteString>{unauthenticated, "A key of less than 2048 bits is weak."}));
}

TEST_F(CheckStepsTest, EncryptionTellsWhatCameInstead) {
    facts.encrypted = true;
    tls.StartClientHandshake();
    const auto failure = [&](WaitEnd end, const ByteString& received) {
        const CheckStep step = EncryptionStep(facts, tls, end, received);
        EXPECT_EQ(step.code, end == WaitEnd::kInterrupted ? ExitCode::kFailed : ExitCode::kNoEncryption);
        return step.sentence;
    };
    EXPECT_EQ(failure(WaitEnd::kTimeout, ""), "The PBX did not complete TLS within 10 s.");
    EXPECT_EQ(failure(WaitEnd::kClosed, ""), "The PBX closed the connection instead of completing TLS.");
    EXPECT_EQ(failure(WaitEnd::kInterrupted, ""), "Interrupted.");
    EXPECT_EQ(failure(WaitEnd::kClosed, "SSH-2.0\r\n"),
              "The answer on port 443 is not TLS: it begins with \"SSH-2.0??\".");
    EXPECT_EQ(failure(WaitEnd::kClosed, ByteString("\x15\x03\x01\0\x02\x02\x46", 7)),
              "The PBX ended TLS with the alert protocol_version (70).");
    // A warning ends nothing.
    EXPECT_EQ(failure(WaitEnd::kTimeout, ByteString("\x15\x03\x01\0\x02\x01\x70", 7)),
              "The PBX did not complete TLS within 10 s.");
}

TEST_F(CheckStepsTest, EncryptionTellsWhyTheProviderGaveUp) {
    facts.encrypted = true;
    tls.StartClientHandshake();
    const ByteString body = ByteString("\x03\0", 2) + ByteString(32, 'r') + ByteString("\0\0\x2F\0", 4);
    const ByteString oldHello = ByteString("\x16\x03\0\0\x2A\x02\0\0\x26", 9) + body;
    tls.Feed(oldHello);
    ExpectFailed(EncryptionStep(facts, tls, WaitEnd::kAnswered, oldHello), ExitCode::kNoEncryption,
                 "The PBX named a version before TLS 1.0.");
}

TEST_F(CheckStepsTest, LoginIsAcceptedForSoManySeconds) {
    Exchange("StartApplicationSession",
             "<StartApplicationSessionPosResponse><sessionID>3</sessionID></StartApplicationSessionPosResponse>");
    ExpectOk(LoginStep(facts, exchange, WaitEnd::kAnswered, ""), "The PBX accepted 40@example.com: session 3.");
    facts.sessionSeconds = 60;
    ExpectOk(LoginStep(facts, exchange, WaitEnd::kClosed, ""), "The PBX accepted 40@example.com: session 3, for 60 s.");
}

TEST_F(CheckStepsTest, LoginGivesThePbxsReason) {
    Exchange("StartApplicationSession",
             "<StartApplicationSessionNegResponse><reason>too many</reason></StartApplicationSessionNegResponse>");
    ExpectFailed(LoginStep(facts, exchange, WaitEnd::kAnswered, ""), ExitCode::kNoLogin,
                 "The PBX refused the login of 40@example.com (reason too many).");
}

TEST_F(CheckStepsTest, LoginTellsWhyThereIsNoAnswer) {
    Exchange("StartApplicationSession");
    const ByteString alert("\x15\x03\x01\0\x02\x02\x28", 7);
    const CheckStep silent = LoginStep(facts, exchange, WaitEnd::kTimeout, "");
    ExpectFailed(silent, ExitCode::kNoLogin, "The PBX at pbx.example.com:443 did not answer the login within 10 s.");
    EXPECT_NE(silent.advice.find("encrypt on"), ByteString::npos);
    ExpectFailed(LoginStep(facts, exchange, WaitEnd::kClosed, ""), ExitCode::kNoLogin,
                 "The PBX closed the connection instead of answering the login.");
    ExpectFailed(LoginStep(facts, exchange, WaitEnd::kClosed, alert), ExitCode::kNoLogin,
                 "The PBX answers in TLS, but encryption is off.");
    ExpectFailed(LoginStep(facts, exchange, WaitEnd::kInterrupted, alert), ExitCode::kFailed, "Interrupted.");

    facts.encrypted = true;
    const CheckStep behindTls = LoginStep(facts, exchange, WaitEnd::kClosed, alert);
    ExpectFailed(behindTls, ExitCode::kNoLogin, "The PBX closed the connection instead of answering the login.");
    EXPECT_EQ(behindTls.advice.find("encrypt o"), ByteString::npos) << "it does take TLS";
}

TEST_F(CheckStepsTest, MonitoringIsSkippedWhenItIsNotAskedFor) {
    EXPECT_EQ(MonitoringStep(facts, exchange, WaitEnd::kAnswered).state, StepState::kSkipped);
}

TEST_F(CheckStepsTest, MonitoringIsGrantedRefusedOrNotAnswered) {
    Exchange("MonitorStart");
    ExpectFailed(MonitoringStep(facts, exchange, WaitEnd::kTimeout), ExitCode::kNotMonitored,
                 "The PBX did not confirm that it monitors 40@example.com within 10 s.");
    ExpectFailed(MonitoringStep(facts, exchange, WaitEnd::kClosed), ExitCode::kNotMonitored,
                 "The PBX closed the connection instead of monitoring the device.");
    ExpectFailed(MonitoringStep(facts, exchange, WaitEnd::kInterrupted), ExitCode::kFailed, "Interrupted.");
    Exchange("MonitorStart", "<CSTAErrorCode><operation>invalidDeviceID</operation></CSTAErrorCode>");
    ExpectFailed(MonitoringStep(facts, exchange, WaitEnd::kAnswered), ExitCode::kNotMonitored,
                 "The PBX refused to monitor 40@example.com (operation invalidDeviceID).");
    Exchange("MonitorStart", "<MonitorStartResponse/>");
    ExpectOk(MonitoringStep(facts, exchange, WaitEnd::kAnswered), "The PBX monitors 40@example.com for the provider.");
}

class CheckedCallTest : public CheckStepsTest {
protected:
    CheckedCallTest() { Exchange("StartApplicationSession", "<StartApplicationSessionPosResponse/>"); }
};

TEST_F(CheckedCallTest, IsBound) {
    Exchange("MakeCall", "<MakeCallResponse/>");
    ExpectOk(CallStep(facts, exchange, true, WaitEnd::kAnswered),
             "4930 was called; the PBX bound it as a call without an ID of device 40@example.com.");
    facts.callId = "7";
    facts.callDevice = "40";
    ExpectOk(CallStep(facts, exchange, true, WaitEnd::kAnswered),
             "4930 was called; the PBX bound it as call 7 of device 40.");
}

TEST_F(CheckedCallTest, IsRefusedOrNotAnswered) {
    Exchange("MakeCall");
    ExpectFailed(CallStep(facts, exchange, false, WaitEnd::kTimeout), ExitCode::kCallNotAnswered,
                 "The PBX did not answer the request to call 4930 within 10 s.");
    ExpectFailed(CallStep(facts, exchange, false, WaitEnd::kClosed), ExitCode::kCallNotAnswered,
                 "The PBX closed the connection instead of placing the call.");
    ExpectFailed(CallStep(facts, exchange, false, WaitEnd::kInterrupted), ExitCode::kFailed, "Interrupted.");
    Exchange("MakeCall", "<CSTAErrorCode><operation>invalidDestination</operation></CSTAErrorCode>");
    ExpectFailed(CallStep(facts, exchange, false, WaitEnd::kAnswered), ExitCode::kCallRefused,
                 "The PBX refused the call to 4930 (operation invalidDestination).");
    Exchange("MakeCall", "<MakeCallResponse/>");
    ExpectFailed(CallStep(facts, exchange, false, WaitEnd::kAnswered), ExitCode::kCallNotAnswered,
                 "The PBX answered the call under the number of another request.");
}

TEST_F(CheckedCallTest, IsClearedOrMayGoOn) {
    Exchange("ClearConnection");
    for (const WaitEnd end : {WaitEnd::kTimeout, WaitEnd::kClosed}) {
        EXPECT_EQ(ClearingStep(facts, exchange, end).code, ExitCode::kNotCleared);
        EXPECT_EQ(ClearingStep(facts, exchange, end).advice,
                  "The call may go on: look at the phone of 40@example.com.");
    }
    Exchange("ClearConnection", "<CSTAErrorCode><operation>invalidConnectionID</operation></CSTAErrorCode>");
    ExpectFailed(ClearingStep(facts, exchange, WaitEnd::kAnswered), ExitCode::kNotCleared,
                 "The PBX refused to clear the call (operation invalidConnectionID).");
    Exchange("ClearConnection", "<ClearConnectionResponse/>");
    ExpectOk(ClearingStep(facts, exchange, WaitEnd::kAnswered), "The call was cleared.");
}

}  // namespace
}  // namespace velmora::ctl
