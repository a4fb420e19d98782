#include "tools/velmoractl/check_report.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

CheckStep Step(const ByteString& name, StepState state, const ByteString& sentence = {}) {
    CheckStep step;
    step.name = name;
    step.state = state;
    step.sentence = sentence;
    return step;
}

class JudgeCheckTest : public testing::Test {
protected:
    JudgeCheckTest() {
        report.facts.address = "pbx.example.com";
        report.facts.port = 443;
        report.facts.device = "40@example.com";
    }

    CheckReport report;
};

TEST_F(JudgeCheckTest, IsOkWithoutAFailedStep) {
    report.steps = {Step("encryption", StepState::kSkipped), Step("monitoring", StepState::kOk)};
    EXPECT_EQ(JudgeCheck(report).code, ExitCode::kDone);
    EXPECT_EQ(JudgeCheck(report).sentence, "OK: the PBX at pbx.example.com:443 accepts and monitors 40@example.com.");
    EXPECT_EQ(JudgeCheck(report).advice, "");
}

TEST_F(JudgeCheckTest, TellsOfMonitoringOnlyWhenItWasAccepted) {
    report.steps = {Step("monitoring", StepState::kSkipped)};
    EXPECT_EQ(JudgeCheck(report).sentence, "OK: the PBX at pbx.example.com:443 accepts 40@example.com.");
}

TEST_F(JudgeCheckTest, TellsOfTheCall) {
    report.facts.number = "4930";
    EXPECT_EQ(JudgeCheck(report).sentence,
              "OK: the PBX at pbx.example.com:443 accepts 40@example.com; 4930 was called, and the call cleared.");
}

TEST_F(JudgeCheckTest, EndsWithTheFirstFailure) {
    CheckStep first = Step("login", StepState::kFailed, "The PBX\x1b said no.");
    first.code = ExitCode::kNoLogin;
    first.advice = "Ask it.";
    CheckStep second = Step("monitoring", StepState::kFailed, "No.");
    second.code = ExitCode::kNotMonitored;
    report.steps = {Step("settings", StepState::kOk), first, second};
    EXPECT_EQ(JudgeCheck(report).code, ExitCode::kNoLogin);
    EXPECT_EQ(JudgeCheck(report).sentence, "FAILED: the PBX? said no.");
    EXPECT_EQ(JudgeCheck(report).advice, "Ask it.");
}

TEST(StepText, PutsTimeNameAndSentenceInColumns) {
    CheckStep step = Step("address", StepState::kOk, "127.0.0.1 is an address.");
    step.tookMs = 12;
    EXPECT_EQ(StepText(step), "      12 ms  address     127.0.0.1 is an address.\n");
    step.tookMs = 1234567;
    EXPECT_EQ(StepText(step), "  1234567 ms  address     127.0.0.1 is an address.\n");
}

TEST(StepText, ShowsNoTimeOfAStepThatWasSkipped) {
    EXPECT_EQ(StepText(Step("login", StepState::kSkipped, "Not tried.")), "             login       Not tried.\n");
}

TEST(StepText, PutsNotesBelowTheSentence) {
    CheckStep step = Step("encryption", StepState::kOk, "TLS 1.0.");
    step.notes = {"One.", "T\nwo."};
    const ByteString indent(4 + 13 + 12, ' ');  // the mark stands in front of the first line
    EXPECT_EQ(StepText(step), "       0 ms  encryption  TLS 1.0.\n" + indent + "One.\n" + indent + "T?wo.\n");
}

TEST(StepText, ShowsNoControlCharacter) {
    EXPECT_EQ(StepText(Step("login", StepState::kSkipped, "\x1b[2J")), "             login       ?[2J\n");
}

TEST(StepMark, TellsTheStatesApart) {
    EXPECT_EQ(StepMark(StepState::kOk), "ok");
    EXPECT_EQ(StepMark(StepState::kFailed), "FAIL");
    EXPECT_EQ(StepMark(StepState::kSkipped), "-");
}

}  // namespace
}  // namespace velmora::ctl
