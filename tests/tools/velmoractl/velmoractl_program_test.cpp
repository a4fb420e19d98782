// velmoractl.exe as its user meets it: started as a process, against pbxsim.exe, its output read through a pipe.

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <optional>

#include "config/registry.h"
#include "tests/support/read_only_key.h"
#include "tests/tools/velmoractl/velmoractl_test.h"
#include "tools/velmoractl/setting_rules.h"

namespace velmora::ctl {
namespace {

// The stored text of a setting; none when it is not stored.
std::optional<ByteString> Stored(const ByteString& name) {
    const RegistryValue value = ReadRegistryValue(name);
    if (value.status != RegistryStatus::kDone) return {};
    return value.bytes.substr(0, value.bytes.find('\0'));
}

// The type that a setting is stored with; REG_NONE when it is not stored.
DWORD StoredType(const char* name) {
    DWORD type = REG_NONE;
    RegGetValueA(HKEY_LOCAL_MACHINE, kRegistryPath, name, RRF_RT_ANY | RRF_NOEXPAND, &type, nullptr, nullptr);
    return type;
}

class DialTest : public VelmoractlTest {
protected:
    // Dials 4930 with the given arguments over a PBX that knows the user, and is started with more arguments.
    Ended DialOver(const ByteString& pbxArguments, const ByteString& dialArguments) {
        return RunOver(pbxArguments, "dial 4930 " + dialArguments);
    }
};
class CapsTest : public VelmoractlTest {};
class ConfigTest : public VelmoractlTest {};
class ConfigureTest : public VelmoractlTest {};

TEST_F(DialTest, PlacesACallAndEndsWithTheVerdict) {
    const Ended ended = DialOver("", "--hold 0");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(ended.LastLine(),
              "OK: 4930 was called; the PBX bound it as call 1 of device 40@example.com; the call was closed.");
    EXPECT_TRUE(PbxPrinted("MakeCall"));
    EXPECT_TRUE(PbxPrinted("ClearConnection"));
}

TEST_F(DialTest, ShowsTheStepsAndMessagesInTheirOrder) {
    const Ended ended = DialOver("", "--hold 0");
    const char* const expected[] = {"ok    Provider loaded",
                                    "->   StartApplicationSession: user 40, password ***, domain example.com",
                                    "<-   StartApplicationSessionPosResponse: session 1",
                                    "->   MonitorStart: device 40@example.com",
                                    "<-   MonitorStartResponse",
                                    "ok    Line opened",
                                    "->   MakeCall: from 40@example.com to 4930",
                                    "<-   MakeCallResponse: call 1 of device 40@example.com",
                                    "ok    Call bound: call 1 of device 40@example.com",
                                    "->   ClearConnection: call 1 of device 40@example.com",
                                    "<-   ClearConnectionResponse",
                                    "ok    Call closed",
                                    "ok    Provider shut down"};
    auto line = ended.lines.begin();
    for (const char* text : expected) {
        line = std::find_if(line, ended.lines.end(),
                            [&](const ByteString& candidate) { return candidate.find(text) != ByteString::npos; });
        ASSERT_NE(line, ended.lines.end()) << text;
    }
}

TEST_F(DialTest, DialsTheDigitsOfANumberAlone) {
    RunningPbx pbx("");
    StoreSettings(pbx.port);
    const Ended ended = RunCtl("dial \"+49 (30) 1234*#\" --hold 0");
    EXPECT_TRUE(ended.LastLine().starts_with("OK: 49301234*# was called;")) << ended.LastLine();
}

TEST_F(DialTest, ReadsAnswersThatComeInPieces) {
    EXPECT_EQ(DialOver("--split 7", "--hold 0").exitCode, 0U);
}

TEST_F(DialTest, WaitsForSlowAnswers) {
    EXPECT_EQ(DialOver("--answer-delay 300", "--hold 0").exitCode, 0U);
}

TEST_F(DialTest, HoldsTheCallForTheTimeAskedFor) {
    const Ended ended = DialOver("--events", "--hold 1");
    EXPECT_TRUE(ended.Printed("<-   DeliveredEvent"));
    EXPECT_TRUE(ended.Printed("Holding the call for 1 s"));
    EXPECT_EQ(ended.exitCode, 0U);
}

TEST_F(DialTest, NeverShowsThePassword) {
    const Ended ended = DialOver("", "--hold 0 --xml");
    EXPECT_TRUE(ended.Printed("<tns:password>***</tns:password>"));
    EXPECT_FALSE(ended.Printed(kUserPassword));
}

TEST_F(DialTest, ShowsMessagesInFullWhenAsked) {
    EXPECT_TRUE(DialOver("", "--hold 0 --xml").Printed("  <calledDirectoryNumber>4930</calledDirectoryNumber>"));
    EXPECT_FALSE(DialOver("", "--hold 0").Printed("<calledDirectoryNumber>"));
}

TEST_F(DialTest, LeavesTheSettingsOfTheLogAsTheyWere) {
    // Neither is what velmoractl would store itself.
    registry.SetRaw("logfile", REG_EXPAND_SZ, ByteString("%TEMP%\\velmora.log\0", 19));
    registry.Set("loglevel", "3 levels");
    EXPECT_EQ(DialOver("", "--hold 0").exitCode, 0U);
    EXPECT_EQ(Stored("logfile"), "%TEMP%\\velmora.log");
    EXPECT_EQ(StoredType("logfile"), DWORD{REG_EXPAND_SZ});
    EXPECT_EQ(Stored("loglevel"), "3 levels");
    EXPECT_EQ(Stored("loglength"), std::nullopt);
}

TEST_F(DialTest, LeavesTheSettingsOfTheLogAsTheyWereWhenTheProviderThrows) {
    StoreSettings("abc");
    registry.Set("logfile", "C:\\velmora.log");
    EXPECT_EQ(RunCtl("dial 4930").exitCode, 4U);
    EXPECT_EQ(Stored("logfile"), "C:\\velmora.log");
    EXPECT_EQ(Stored("loglevel"), std::nullopt);
}

TEST_F(DialTest, ClearsAwayWhatAKilledPredecessorLeft) {
    registry.Set("logfile", R"(\\.\pipe\velmoractl-log-1)");
    registry.Set("loglevel", "5");
    registry.Set("loglength", "2147483647");
    EXPECT_EQ(DialOver("", "--hold 0").exitCode, 0U);
    EXPECT_EQ(Stored("logfile"), std::nullopt);
    EXPECT_EQ(Stored("loglevel"), std::nullopt);
    EXPECT_EQ(Stored("loglength"), std::nullopt);
}

TEST_F(DialTest, PlacesACallOverTls) {
    encrypt = "1";
    const Ended ended = DialOver("--tls", "--hold 0");
    EXPECT_EQ(ended.exitCode, 0U) << ended.LastLine();
    EXPECT_TRUE(ended.lines.front().ends_with(", encrypted")) << ended.lines.front();
    EXPECT_TRUE(PbxPrinted("-- encrypted: TLS 1.0, AES128-SHA, new session"));
    EXPECT_TRUE(PbxPrinted("MakeCall"));
    EXPECT_TRUE(PbxPrinted("ClearConnection"));
}

TEST_F(DialTest, PlacesACallOverTlsWhateverTheKeyAndHoweverTheBytesCome) {
    encrypt = "1";
    for (const char* name : {"rsa1024", "rsa2048", "rsa4096"}) {
        SCOPED_TRACE(name);
        const ByteString path = ByteString(VELMORA_IDENTITIES) + "/" + name;
        const ByteString identity = "--tls --cert " + path + ".der --key " + path + "_key.der";
        EXPECT_EQ(DialOver(identity + " --split 1", "--hold 0").exitCode, 0U);
        EXPECT_TRUE(PbxPrinted("TLS with the certificate of \"pbx.velmora.example\""));
        EXPECT_TRUE(PbxPrinted("-- encrypted: "));
    }
}

TEST_F(DialTest, FailsAtOnceWhenThePbxRefusesTls) {
    encrypt = "1";
    const Ended ended = DialOver("--tls --tls-refuse", "--timeout 86400");
    EXPECT_EQ(ended.exitCode, 11U);
    EXPECT_TRUE(ended.Printed("note  The PBX ended TLS with the alert handshake_failure (40)"));
    EXPECT_TRUE(ended.Printed("velmoractl config set encrypt off"));
    EXPECT_TRUE(ended.LastLine().ends_with(" has failed: the PBX ended TLS with the alert handshake_failure (40)."))
        << ended.LastLine();
}

TEST_F(DialTest, AdvisesToSwitchEncryptionOffWhenThePbxDoesNotSpeakTls) {
    encrypt = "1";
    const Ended ended = DialOver("", "--timeout 1");
    EXPECT_EQ(ended.exitCode, 6U);
    EXPECT_TRUE(ended.Printed("does the PBX speak TLS on this port? If not: velmoractl config set encrypt off"));
    EXPECT_TRUE(PbxPrinted("-- hanging up: it speaks TLS, but this PBX speaks plain CSTA"));
}

TEST_F(DialTest, AdvisesToSwitchEncryptionOnWhenThePbxWantsTls) {
    const Ended ended = DialOver("--tls", "--timeout 1");
    EXPECT_EQ(ended.exitCode, 6U);
    EXPECT_TRUE(ended.Printed("does the PBX want TLS on this port? Then: velmoractl config set encrypt on"));
    EXPECT_TRUE(PbxPrinted("-- hanging up: it speaks plain CSTA, but this PBX speaks TLS"));
}

TEST_F(DialTest, FailsWhenThePbxRefusesTheLogin) {
    const Ended ended = DialOver("--reject-login", "");
    EXPECT_EQ(ended.exitCode, 6U);
    EXPECT_TRUE(ended.LastLine().starts_with("FAILED: the PBX refused the login of 40@example.com ("))
        << ended.LastLine();
    EXPECT_FALSE(PbxPrinted("MakeCall"));
}

TEST_F(DialTest, FailsWhenThePbxDoesNotAnswerTheLogin) {
    const Ended ended = DialOver("--silent", "--timeout 1");
    EXPECT_EQ(ended.exitCode, 6U);
    EXPECT_TRUE(ended.LastLine().ends_with(" did not answer the login within 1 s.")) << ended.LastLine();
}

TEST_F(DialTest, FailsWhenThePbxRefusesTheCall) {
    const Ended ended = DialOver("--error-on-makecall", "");
    EXPECT_EQ(ended.exitCode, 7U);
    EXPECT_TRUE(ended.LastLine().starts_with("FAILED: the PBX refused the call to 4930 (operation "))
        << ended.LastLine();
}

TEST_F(DialTest, FailsWhenThereIsNoPbx) {
    ByteString port;
    {
        const RunningPbx pbx("");
        port = pbx.port;
    }
    StoreSettings(port);
    const Ended ended = RunCtl("dial 4930");
    EXPECT_EQ(ended.exitCode, 5U);
    EXPECT_EQ(ended.LastLine(), "FAILED: there is no connection to the PBX at 127.0.0.1:" + port + ".");
}

TEST_F(DialTest, NamesTheSettingThatTheProviderThrowsOver) {
    StoreSettings("abc");
    const Ended ended = RunCtl("dial 4930");
    EXPECT_EQ(ended.exitCode, 4U);
    EXPECT_TRUE(ended.Printed("TSPI_providerInit threw \"invalid stoi argument\""));
    EXPECT_TRUE(ended.Printed("velmoractl config set port 443"));
    EXPECT_EQ(ended.LastLine(), "FAILED: a setting is wrong: port \"abc\" is no number.");
}

TEST_F(DialTest, NamesAGuidThatIsTooShort) {
    RunningPbx pbx("");
    StoreSettings(pbx.port);
    registry.Set("guid", "xyz");
    const Ended ended = RunCtl("dial 4930");
    EXPECT_EQ(ended.exitCode, 4U);
    EXPECT_TRUE(ended.Printed("TSPI_lineGetDevCaps threw \"invalid string position\""));
    EXPECT_EQ(ended.LastLine(), "FAILED: a setting is wrong: guid \"xyz\" is too short for a GUID.");
}

TEST_F(DialTest, PlacesTheCallWithoutSeeingTheAnswersWhenItMayNotSwitchTheLogOn) {
    RunningPbx pbx("");
    StoreSettings(pbx.port);
    const ReadOnlyKey readOnly;
    const Ended ended = RunCtl("dial 4930 --hold 0");
    EXPECT_EQ(ended.exitCode, 9U);
    EXPECT_TRUE(ended.Printed("note  No right to switch the trace log on"));
    EXPECT_TRUE(ended.Printed("Run velmoractl as administrator"));
    EXPECT_EQ(ended.LastLine(),
              "UNKNOWN: the call to 4930 was handed to the provider, but the PBX's answer cannot be seen.");
    pbxLines = ToEnd(pbx.program).lines;
    EXPECT_TRUE(PbxPrinted("MakeCall"));
    EXPECT_TRUE(PbxPrinted("ClearConnection"));
}

TEST_F(DialTest, AsksForASettingThatIsMissing) {
    const Ended ended = RunCtl("dial 4930");
    EXPECT_EQ(ended.exitCode, 4U);
    EXPECT_EQ(ended.lines, (Lines{"Set it with: velmoractl config set username USERNAME",
                                  "FAILED: a setting is wrong: username is not set."}));
}

TEST_F(DialTest, FailsWhenTheProviderCannotBeLoaded) {
    StoreSettings("443");
    const Ended missing = RunCtl("dial 4930 --tsp nosuch.tsp");
    EXPECT_EQ(missing.exitCode, 3U);
    EXPECT_TRUE(missing.LastLine().ends_with("nosuch.tsp cannot be loaded: there is no such file."))
        << missing.LastLine();
    const Ended other = RunCtl("dial 4930 --tsp C:\\windows\\system32\\version.dll");
    EXPECT_EQ(other.exitCode, 3U);
    EXPECT_TRUE(other.LastLine().ends_with("it has no entry point TSPI_lineNegotiateTSPIVersion.")) << other.LastLine();
}

TEST_F(DialTest, RefusesAWrongCommandLine) {
    for (const char* arguments : {"dial", "dial abc", "dial 1 2", "dial 1 --hold x", "dial 1 --timeout -1",
                                  "dial 1 --tsp", "dial 1 --nosuch", "nosuch"}) {
        const Ended ended = RunCtl(arguments);
        EXPECT_EQ(ended.exitCode, 2U) << arguments;
        EXPECT_TRUE(ended.Printed("--help")) << arguments;
    }
}

TEST_F(CapsTest, PrintsWhatTheProviderTellsTapi) {
    StoreSettings("1");
    const Ended ended = RunCtl("caps");
    EXPECT_EQ(ended.exitCode, 0U);
    for (const char* line :
         {"  LineName                Velmora PBX", "  ProviderInfo            Velmora TAPI Service Provider",
          "  dwPermanentLineID       0x10000", "  PermanentLineGuid       {00000000-0000-4000-8000-000000000000}",
          "  dwLineFeatures          0x8         LINEFEATURE_MAKECALL",
          "  DefaultDialParams       pause 250 ms, speed 50 ms, digit 250 ms, wait for dial tone 500 ms",
          "  Address                 40", "  dwCallFeatures          0x2C5       LINECALLFEATURE_ACCEPT"}) {
        EXPECT_EQ(std::ranges::count(ended.lines, line), 1) << line;
    }
}

TEST_F(CapsTest, NeedsNoSettingsAndLeavesNone) {
    const Ended ended = RunCtl("caps");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_FALSE(ended.Printed("Address "));
    EXPECT_EQ(ReadRegistryValue("logfile").status, RegistryStatus::kNoKey);
}

TEST_F(CapsTest, NamesTheSettingThatTheProviderThrowsOver) {
    registry.Set("loglevel", "99999999999");
    // That value is replaced for the run, so it does no harm; this one does.
    registry.Set("autooriginate", "maybe");
    const Ended ended = RunCtl("caps");
    EXPECT_EQ(ended.exitCode, 4U);
    EXPECT_EQ(ended.LastLine(), "FAILED: a setting is wrong: autooriginate \"maybe\" is no number.");
}

TEST_F(ConfigTest, ListsTheDefaultsWhenNothingIsStored) {
    const Ended ended = RunCtl("config get");
    EXPECT_EQ(ended.exitCode, 0U);
    ASSERT_EQ(ended.lines.size(), 11U);
    EXPECT_EQ(ended.lines[0], "username                                 WRONG: it is not set");
    EXPECT_EQ(ended.lines[1], "password                                 (not set)");
    EXPECT_EQ(ended.lines[4], "port           443                       (default)");
    EXPECT_EQ(ended.lines[8], "loglength      1000                      (default)");
    EXPECT_EQ(ReadRegistryValue("port").status, RegistryStatus::kNoKey);
}

TEST_F(ConfigTest, ListsWhatIsStoredAndWhatIsWrong) {
    StoreSettings("abc");
    const Ended ended = RunCtl("config get");
    ASSERT_EQ(ended.lines.size(), 11U);
    EXPECT_EQ(ended.lines[0], "username       40");
    EXPECT_EQ(ended.lines[1], "password       ***");
    EXPECT_EQ(ended.lines[4], "port           abc                       WRONG: it is no number");
    EXPECT_EQ(ended.lines[10], "guid           00000000-0000-4000-8000-000000000000");
}

TEST_F(ConfigTest, PrintsOneValueAlone) {
    StoreSettings("5050");
    EXPECT_EQ(RunCtl("config get port").lines, (Lines{"5050"}));
    EXPECT_EQ(RunCtl("config get loglength").lines, (Lines{"1000"}));
    EXPECT_EQ(RunCtl("config get nosuch").exitCode, 2U);
}

TEST_F(ConfigTest, StoresAndPrintsEverySetting) {
    const struct {
        const char* name;
        const char* value;
        const char* stored;
    } kValues[] = {{"username", "41", "41"},
                   {"domain", "example.org", "example.org"},
                   {"address", "pbx.example.org", "pbx.example.org"},
                   {"port", "8443", "8443"},
                   {"encrypt", "off", "0"},
                   {"autooriginate", "yes", "1"},
                   {"loglevel", "-1", "-1"},
                   {"loglength", "50", "50"},
                   {"logfile", "\"C:\\my logs\\velmora.log\"", "C:\\my logs\\velmora.log"},
                   {"guid", "00000000-0000-4000-8000-0000000000aB", "00000000-0000-4000-8000-0000000000aB"}};
    for (const auto& [name, value, stored] : kValues) {
        const Ended ended = RunCtl(ByteString("config set ") + name + " " + value);
        EXPECT_EQ(ended.exitCode, 0U) << name;
        EXPECT_EQ(ended.lines, (Lines{ByteString(name) + " = " + stored}));
        EXPECT_EQ(StoredType(name), DWORD{REG_SZ});
        EXPECT_EQ(Stored(name), stored);
        EXPECT_EQ(RunCtl(ByteString("config get ") + name).lines, (Lines{stored}));
    }
}

TEST_F(ConfigTest, ChangesNothingWhenAValueIsRefused) {
    StoreSettings("5050");
    for (const char* arguments :
         {"port abc", "port 0", "port 65536", "encrypt maybe", "loglevel 5x", "loglength 2147483648", "guid xyz"}) {
        const Ended ended = RunCtl(ByteString("config set ") + arguments);
        EXPECT_EQ(ended.exitCode, 4U) << arguments;
        EXPECT_TRUE(ended.LastLine().ends_with("Nothing is changed.")) << ended.LastLine();
    }
    EXPECT_EQ(Stored("port"), "5050");
    EXPECT_EQ(Stored("encrypt"), "0");
    EXPECT_EQ(Stored("loglevel"), std::nullopt);
    EXPECT_EQ(Stored("loglength"), std::nullopt);
    EXPECT_EQ(Stored("guid"), "00000000-0000-4000-8000-000000000000");
}

TEST_F(ConfigTest, SaysWhatAPortMustBe) {
    EXPECT_EQ(RunCtl("config set port abc").lines,
              (Lines{"velmoractl: port must be a number from 1 to 65535, not \"abc\". Nothing is changed."}));
}

TEST_F(ConfigTest, GoesBackToTheDefaultWithoutAValue) {
    StoreSettings("5050");
    EXPECT_EQ(RunCtl("config set port").lines, (Lines{"port = 443  (default)"}));
    EXPECT_EQ(Stored("port"), "");
    EXPECT_EQ(RunCtl("config set domain").lines, (Lines{"domain is empty now"}));
    EXPECT_EQ(Stored("domain"), "");
}

TEST_F(ConfigTest, ReadsThePasswordFromTheInputAndNeverShowsIt) {
    const Ended set = RunCtl("config set password", ByteString(kUserPassword) + "\r\nmore\r\n");
    EXPECT_EQ(set.exitCode, 0U);
    EXPECT_EQ(set.lines, (Lines{"password = ***"}));
    EXPECT_EQ(Stored("password"), kUserPassword);
    EXPECT_EQ(RunCtl("config get password").lines, (Lines{"***"}));
    EXPECT_FALSE(RunCtl("config get").Printed(kUserPassword));
    EXPECT_EQ(RunCtl("config get password --show-password").lines, (Lines{kUserPassword}));
}

TEST_F(ConfigTest, NeverShowsAPasswordGivenOnTheCommandLine) {
    const Ended set = RunCtl("config set password " + ByteString(kUserPassword));
    EXPECT_EQ(set.exitCode, 0U);
    EXPECT_FALSE(set.Printed(kUserPassword));
    EXPECT_EQ(Stored("password"), kUserPassword);
}

TEST_F(ConfigTest, ChangesNoPasswordWhenNoneIsGiven) {
    StoreSettings("443");
    EXPECT_EQ(RunCtl("config set password").exitCode, 2U);
    EXPECT_EQ(Stored("password"), kUserPassword);
}

TEST_F(ConfigTest, WarnsOfATextThatTheDialogWouldCut) {
    const Ended ended = RunCtl("config set domain " + ByteString(256, 'x'));
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_TRUE(ended.Printed("Mind: domain is longer than 255 bytes"));
    EXPECT_EQ(Stored("domain"), ByteString(256, 'x'));
}

TEST_F(ConfigTest, AsksForTheRightsOfAnAdministrator) {
    StoreSettings("5050");
    const ReadOnlyKey readOnly;
    const Ended ended = RunCtl("config set port 443");
    EXPECT_EQ(ended.exitCode, 10U);
    EXPECT_TRUE(ended.LastLine().ends_with("Run velmoractl as administrator.")) << ended.LastLine();
    EXPECT_EQ(Stored("port"), "5050");
    EXPECT_EQ(RunCtl("config get port").lines, (Lines{"5050"}));
}

TEST_F(ConfigTest, RefusesAWrongCommandLine) {
    for (const char* arguments : {"config", "config nosuch", "config set", "config set nosuch 1", "config get a b",
                                  "config set username a b"}) {
        EXPECT_EQ(RunCtl(arguments).exitCode, 2U) << arguments;
    }
}

// Where an administrator has closed the key to ordinary users.
TEST(ClosedSettings, AreToldFromSettingsThatAreNotThere) {
    RegistryScope registry;
    registry.Set("username", "40");
    const ClosedKey closed;
    for (const char* arguments : {"config get", "config get username", "config set port 443", "configure", "caps",
                                  "check", "dial 4930", "log", "status"}) {
        SCOPED_TRACE(arguments);
        const Ended ended = RunCtl(arguments);
        EXPECT_EQ(ended.exitCode, 10U);
        EXPECT_EQ(ended.lines,
                  (Lines{"velmoractl: this user may not read the settings in "
                         "HKEY_LOCAL_MACHINE\\SOFTWARE\\velmora\\tapi. Run velmoractl as administrator."}));
    }
}

TEST(ClosedSettings, AreToldToScriptsAsJson) {
    RegistryScope registry;
    registry.Set("username", "40");
    const ClosedKey closed;
    for (const char* arguments : {"check --json", "status --json"}) {
        SCOPED_TRACE(arguments);
        const Ended ended = RunCtl(arguments);
        EXPECT_EQ(ended.exitCode, 10U);
        EXPECT_EQ(ended.lines,
                  (Lines{R"({"result": "failed", "exitCode": 10, "sentence": "FAILED: this user may not read the )"
                         R"(settings in HKEY_LOCAL_MACHINE\\SOFTWARE\\velmora\\tapi.", )"
                         R"("advice": "Run velmoractl as administrator."})"}));
    }
}

TEST(ClosedSettings, KeepNobodyFromHelpAndFromALogThatIsNamed) {
    RegistryScope registry;
    registry.Set("username", "40");
    const ClosedKey closed;
    EXPECT_EQ(RunCtl("config --help").exitCode, 0U);
    EXPECT_TRUE(RunCtl("log show nosuch.log").Printed("nosuch.log is not there"));
}

// What the dialog itself does is tested in a window of its own; here it never opens.

TEST_F(ConfigureTest, NamesTheSettingThatKeepsTheDialogFromOpening) {
    StoreSettings("abc");
    const Ended ended = RunCtl("configure");
    EXPECT_EQ(ended.exitCode, 4U);
    EXPECT_TRUE(ended.Printed("the dialog cannot open: port \"abc\" is no number."));
    EXPECT_EQ(ended.LastLine(), "Mend it with: velmoractl config set port 443");
}

TEST_F(ConfigureTest, AsksForTheRightsThatTheDialogWouldMiss) {
    StoreSettings("5050");
    const ReadOnlyKey readOnly;
    const Ended ended = RunCtl("configure");
    EXPECT_EQ(ended.exitCode, 10U);
    EXPECT_TRUE(ended.LastLine().ends_with("Run velmoractl as administrator.")) << ended.LastLine();
}

TEST_F(ConfigureTest, SaysThatTheProviderIsNotThere) {
    StoreSettings("5050");
    const Ended ended = RunCtl("configure --tsp nosuch.tsp");
    EXPECT_EQ(ended.exitCode, 3U);
    EXPECT_TRUE(ended.Printed("there is no such file"));
}

TEST_F(ConfigureTest, RefusesAWrongCommandLine) {
    for (const char* arguments : {"configure now", "configure --tsp", "configure --nosuch"}) {
        EXPECT_EQ(RunCtl(arguments).exitCode, 2U) << arguments;
    }
}

TEST(Velmoractl, PrintsItsVersion) {
    const Ended ended = RunCtl("--version");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(ended.lines, (Lines{"velmoractl 2.0.3"}));
}

TEST(Velmoractl, HelpsWithEveryCommand) {
    for (const char* command : {"dial", "check", "caps", "config"}) {
        const Ended ended = RunCtl(ByteString(command) + " --help");
        EXPECT_EQ(ended.exitCode, 0U);
        ASSERT_FALSE(ended.lines.empty());
        EXPECT_TRUE(ended.lines.front().starts_with(ByteString("velmoractl ") + command)) << ended.lines.front();
        EXPECT_TRUE(RunCtl("--help").Printed(ByteString("  ") + command + " "));
    }
}

TEST(Velmoractl, HelpNamesEverySetting) {
    const Ended help = RunCtl("config --help");
    for (const SettingRule& rule : SettingRules())
        EXPECT_TRUE(help.Printed("  " + ByteString(rule.name) + " ")) << rule.name;
}

}  // namespace
}  // namespace velmora::ctl
