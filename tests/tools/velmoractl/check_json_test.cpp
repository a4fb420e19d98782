#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tools/velmoractl/check_report.h"

namespace velmora::ctl {
namespace {

using Json = nlohmann::json;

CheckStep Step(const ByteString& name, StepState state) {
    CheckStep step;
    step.name = name;
    step.state = state;
    return step;
}

class CheckJsonTest : public testing::Test {
protected:
    CheckJsonTest() {
        report.facts.address = "pbx.example.com";
        report.facts.port = 443;
        report.facts.device = "40@example.com";
    }

    Json Read() const { return Json::parse(CheckJson(report)); }

    CheckReport report;
};

TEST_F(CheckJsonTest, HoldsTheVerdict) {
    CheckStep failed = Step("login", StepState::kFailed);
    failed.sentence = "The PBX said \"no\".";
    failed.code = ExitCode::kNoLogin;
    failed.advice = "Ask it.";
    report.steps = {Step("settings", StepState::kOk), failed};
    const Json json = Read();
    EXPECT_EQ(json["result"], "failed");
    EXPECT_EQ(json["exitCode"], 6);
    EXPECT_EQ(json["sentence"], "FAILED: the PBX said \"no\".");
    EXPECT_EQ(json["advice"], "Ask it.");
}

TEST_F(CheckJsonTest, HoldsTheSteps) {
    CheckStep step = Step("encryption", StepState::kOk);
    step.tookMs = 41;
    step.sentence = "TLS 1.0.";
    step.notes = {"One.", "Two."};
    report.steps = {step, Step("login", StepState::kFailed), Step("monitoring", StepState::kSkipped)};
    const Json steps = Read()["steps"];
    ASSERT_EQ(steps.size(), 3U);
    EXPECT_EQ(steps[0], (Json{{"name", "encryption"},
                              {"state", "ok"},
                              {"milliseconds", 41},
                              {"sentence", "TLS 1.0."},
                              {"notes", {"One.", "Two."}}}));
    EXPECT_EQ(steps[1]["state"], "failed");
    EXPECT_EQ(steps[2]["state"], "skipped");
    EXPECT_EQ(steps[2]["notes"], Json::array());
}

TEST_F(CheckJsonTest, HoldsTheFacts) {
    CheckFacts& facts = report.facts;
    facts.encrypted = true;
    facts.endpoints = {"192.0.2.1", "192.0.2.2"};
    facts.tls = {"TLS 1.0", "TLS_RSA_WITH_AES_128_CBC_SHA", 2048, "M\xFCller"};
    facts.sessionId = "3";
    facts.sessionSeconds = 60;
    facts.number = "4930";
    facts.callId = "7";
    facts.callDevice = "40";
    EXPECT_EQ(Read()["facts"], (Json{{"address", "pbx.example.com"},
                                     {"port", 443},
                                     {"device", "40@example.com"},
                                     {"encrypted", true},
                                     {"endpoints", {"192.0.2.1", "192.0.2.2"}},
                                     {"tlsVersion", "TLS 1.0"},
                                     {"suite", "TLS_RSA_WITH_AES_128_CBC_SHA"},
                                     {"keyBits", 2048},
                                     {"certificateName", "M\xC3\xBCller"},
                                     {"authenticated", false},
                                     {"sessionId", "3"},
                                     {"sessionSeconds", 60},
                                     {"number", "4930"},
                                     {"callId", "7"},
                                     {"callDevice", "40"}}));
}

TEST_F(CheckJsonTest, LeavesOutWhatIsNotKnown) {
    EXPECT_EQ(
        Read()["facts"],
        (Json{{"address", "pbx.example.com"}, {"port", 443}, {"device", "40@example.com"}, {"encrypted", false}}));
}

TEST_F(CheckJsonTest, HoldsNoFactsWithoutSettings) {
    report.facts = {};
    EXPECT_EQ(Read()["facts"], Json::object());
}

TEST_F(CheckJsonTest, IsOneLine) {
    report.facts.device = "4\r\n0";
    report.steps = {Step("a\nb", StepState::kOk)};
    const ByteString text = CheckJson(report);
    EXPECT_EQ(text.find('\n'), text.size() - 1);
    EXPECT_EQ(text.find('\r'), ByteString::npos);
}

}  // namespace
}  // namespace velmora::ctl
