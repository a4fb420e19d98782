#include "tools/velmoractl/install_report.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

InstallFacts Ready() {
    InstallFacts facts;
    facts.path = "C:\\Windows\\system32\\velmora.tsp";
    facts.present = true;
    facts.header = PeHeader{0x8664, true};
    facts.version = "2.0.3";
    facts.ids = {4};
    facts.service = ServiceState::kRunning;
    facts.address = "pbx.example.com";
    facts.port = "443";
    facts.device = "40@example.com";
    facts.encrypt = "1";
    return facts;
}

TEST(JudgeInstall, IsOkWhenNothingIsMissing) {
    const Verdict verdict = JudgeInstall(Ready());
    EXPECT_EQ(verdict.code, ExitCode::kDone);
    EXPECT_EQ(verdict.sentence, "OK: the provider is ready; velmoractl check looks at the way to the PBX.");
}

TEST(JudgeInstall, NamesTheMissingFile) {
    InstallFacts facts = Ready();
    facts.present = false;
    facts.header = {};
    const Verdict verdict = JudgeInstall(facts);
    EXPECT_EQ(verdict.code, ExitCode::kNotInstalled);
    EXPECT_EQ(verdict.sentence, "FAILED: C:\\Windows\\system32\\velmora.tsp is not there.");
    EXPECT_NE(verdict.advice.find("velmoractl install --copy"), ByteString::npos);
}

TEST(JudgeInstall, TakesNothingButA64BitLibrary) {
    InstallFacts facts = Ready();
    for (const std::optional<PeHeader> header :
         {std::optional<PeHeader>(), {PeHeader{0x014C, true}}, {PeHeader{0x8664, false}}}) {
        facts.header = header;
        EXPECT_EQ(JudgeInstall(facts).code, ExitCode::kNot64Bit);
    }
}

TEST(JudgeInstall, SendsToInstallWhatTapiDoesNotKnow) {
    InstallFacts facts = Ready();
    facts.ids.clear();
    const Verdict verdict = JudgeInstall(facts);
    EXPECT_EQ(verdict.code, ExitCode::kNotRegistered);
    EXPECT_EQ(verdict.advice, "Run as administrator: velmoractl install");
}

TEST(JudgeInstall, NeedsATelephonyServiceThatCanRun) {
    InstallFacts facts = Ready();
    const struct {
        ServiceState state;
        ExitCode code;
    } kStates[] = {{ServiceState::kMissing, ExitCode::kNoTelephony}, {ServiceState::kDisabled, ExitCode::kNoTelephony},
                   {ServiceState::kStopped, ExitCode::kDone},        {ServiceState::kRunning, ExitCode::kDone},
                   {ServiceState::kChanging, ExitCode::kDone},       {ServiceState::kUnknown, ExitCode::kDone}};
    for (const auto& [state, code] : kStates) {
        facts.service = state;
        EXPECT_EQ(JudgeInstall(facts).code, code) << static_cast<int>(state);
    }
}

TEST(JudgeInstall, NamesAFaultySetting) {
    InstallFacts facts = Ready();
    facts.settingFault = "port \"abc\" is no number.";
    facts.settingFix = "velmoractl config set port 443";
    const Verdict verdict = JudgeInstall(facts);
    EXPECT_EQ(verdict.code, ExitCode::kBadSettings);
    EXPECT_EQ(verdict.sentence, "FAILED: port \"abc\" is no number.");
    EXPECT_EQ(verdict.advice, "Mend it with: velmoractl config set port 443");
}

TEST(JudgeInstall, NamesTheFirstOfSeveralFaults) {
    InstallFacts facts = Ready();
    facts.settingFault = "username is not set.";
    EXPECT_EQ(JudgeInstall(facts).code, ExitCode::kBadSettings);
    facts.service = ServiceState::kMissing;
    EXPECT_EQ(JudgeInstall(facts).code, ExitCode::kNoTelephony);
    facts.ids.clear();
    EXPECT_EQ(JudgeInstall(facts).code, ExitCode::kNotRegistered);
    facts.header = {};
    EXPECT_EQ(JudgeInstall(facts).code, ExitCode::kNot64Bit);
    facts.present = false;
    EXPECT_EQ(JudgeInstall(facts).code, ExitCode::kNotInstalled);
}

TEST(InstallText, HasALineForEachPart) {
    EXPECT_EQ(InstallText(Ready()),
              "file      C:\\Windows\\system32\\velmora.tsp, version 2.0.3, 64-bit\n"
              "TAPI      knows the provider, with the permanent ID 4\n"
              "service   the telephony service runs\n"
              "settings  address pbx.example.com, port 443, user 40@example.com, encrypt on\n");
}

TEST(InstallText, SaysWhatIsNotThere) {
    InstallFacts facts;
    facts.path = "C:\\velmora.tsp";
    facts.port = "443";
    facts.encrypt = "0";
    EXPECT_EQ(InstallText(facts),
              "file      C:\\velmora.tsp is not there\n"
              "TAPI      does not know the provider\n"
              "service   this user may not ask for the state of the telephony service\n"
              "settings  address (not set), port 443, user (not set), encrypt off\n");
}

TEST(InstallText, SaysWhatIsWrongWithTheFile) {
    InstallFacts facts = Ready();
    facts.header = PeHeader{0x014C, true};
    EXPECT_NE(InstallText(facts).find("version 2.0.3, not a 64-bit library\n"), ByteString::npos);
    facts.header = {};
    facts.version.clear();
    EXPECT_NE(InstallText(facts).find("velmora.tsp, without a version, no program\n"), ByteString::npos);
}

TEST(InstallText, ListsEveryId) {
    InstallFacts facts = Ready();
    facts.ids = {4, 7, 4294967295U};
    EXPECT_NE(InstallText(facts).find("permanent ID 4, 7, 4294967295\n"), ByteString::npos);
}

TEST(InstallText, KeepsEachPartOnItsLine) {
    InstallFacts facts = Ready();
    facts.address = "pbx\r\nexample\x1b[2J";
    EXPECT_NE(InstallText(facts).find("address pbx??example?[2J, port"), ByteString::npos);
}

}  // namespace
}  // namespace velmora::ctl
