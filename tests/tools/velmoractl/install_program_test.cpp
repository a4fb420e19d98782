// velmoractl install, remove and status as an administrator meets them. Wine's tapi32.dll has the functions that they
// call as stubs alone, so a fake takes its place and the call that was made is checked; what the telephony service of
// Windows makes of that call is tried on no Windows here.

#include "tests/support/file_bytes.h"
#include "tests/support/provider_host.h"
#include "tests/tools/velmoractl/telephony_scope.h"
#include "tests/tools/velmoractl/velmoractl_test.h"
#include "tools/velmoractl/administrator.h"
#include "tools/velmoractl/installed_provider.h"

namespace velmora::ctl {
namespace {

constexpr char kProvider[] = "velmora.tsp";
constexpr DWORD kDeadlineMs = 30000;

// A token of this process, with or without the group of the administrators.
class Token {
public:
    explicit Token(bool administrator) {
        HANDLE own = nullptr;
        EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &own));
        BYTE group[SECURITY_MAX_SID_SIZE];
        DWORD groupBytes = sizeof(group);
        CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, group, &groupBytes);
        SID_AND_ATTRIBUTES administrators{group, 0};
        EXPECT_TRUE(
            CreateRestrictedToken(own, 0, administrator ? 0 : 1, &administrators, 0, nullptr, 0, nullptr, &handle));
        CloseHandle(own);
    }
    ~Token() { CloseHandle(handle); }
    Token(const Token&) = delete;
    Token& operator=(const Token&) = delete;

    HANDLE handle = nullptr;
};

// Runs velmoractl as a user without the rights of an administrator; gives its exit code.
DWORD RunWithoutRights(const ByteString& arguments) {
    const Token token(false);
    ByteString commandLine = "\"" + PathBesideProgram("velmoractl.exe") + "\" " + arguments;
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    EXPECT_TRUE(CreateProcessAsUserA(token.handle, nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                     nullptr, &startup, &started));
    DWORD exitCode = STILL_ACTIVE;
    if (WaitForSingleObject(started.hProcess, kDeadlineMs) == WAIT_OBJECT_0) {
        GetExitCodeProcess(started.hProcess, &exitCode);
    } else {
        TerminateProcess(started.hProcess, 99);
    }
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return exitCode;
}

class InstallTest : public VelmoractlTest {};
class RemoveTest : public VelmoractlTest {};
class StatusTest : public VelmoractlTest {};

TEST_F(InstallTest, AddsTheProviderByItsFileName) {
    const SystemFileScope file(kProvider);
    const FakeTapi tapi;
    const Ended ended = RunCtl("install");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(tapi.Calls(), (Lines{"lineAddProviderW velmora.tsp, no window"}));
    EXPECT_EQ(ended.lines.front(), "Added velmora.tsp to TAPI, with the permanent ID 42.");
    EXPECT_TRUE(ended.Printed("net stop tapisrv"));
    EXPECT_TRUE(ended.Printed("net start tapisrv"));
}

TEST_F(InstallTest, ChangesNothingWhenTapiKnowsTheProvider) {
    const SystemFileScope file(kProvider);
    const FakeTapi tapi;
    const ProviderListScope list({"unimdm.tsp", "Velmora.tsp"});
    const Ended ended = RunCtl("install");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(ended.lines, (Lines{"TAPI knows velmora.tsp already, with the permanent ID 11."}));
    EXPECT_TRUE(tapi.Calls().empty());
}

TEST_F(InstallTest, AsksForTheFileThatIsMissing) {
    const SystemFileScope none;
    const FakeTapi tapi;
    const Ended ended = RunCtl("install");
    EXPECT_EQ(ended.exitCode, 16U);
    EXPECT_TRUE(ended.lines.front().ends_with("system32\\velmora.tsp is not there.")) << ended.lines.front();
    EXPECT_TRUE(ended.Printed("velmoractl install --copy"));
    EXPECT_TRUE(tapi.Calls().empty());
}

TEST_F(InstallTest, TakesNoFileThatTheServiceCannotLoad) {
    const SystemFileScope program("velmoractl.exe");
    const FakeTapi tapi;
    const Ended ended = RunCtl("install");
    EXPECT_EQ(ended.exitCode, 17U);
    EXPECT_TRUE(ended.Printed("is not a 64-bit library"));
    EXPECT_TRUE(tapi.Calls().empty());
}

TEST_F(InstallTest, CopiesTheFileFirstWhenAsked) {
    const SystemFileScope older("fake_tapi32.dll");
    const FakeTapi tapi;
    const Ended ended = RunCtl("install --copy");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(FileBytes(SystemProviderPath()), FileBytes(PathBesideProgram(kProvider)));
    EXPECT_EQ(tapi.Calls().size(), 1U);
}

TEST_F(InstallTest, CopiesTheFileOfAProviderThatTapiKnowsAlready) {
    const SystemFileScope older("fake_tapi32.dll");
    const FakeTapi tapi;
    const ProviderListScope list({kProvider});
    EXPECT_EQ(RunCtl("install --copy").exitCode, 0U);
    EXPECT_EQ(FileBytes(SystemProviderPath()), FileBytes(PathBesideProgram(kProvider)));
    EXPECT_TRUE(tapi.Calls().empty());
}

TEST_F(InstallTest, SaysThatTheFileIsInUse) {
    const SystemFileScope older(kProvider);
    const FakeTapi tapi;
    const HANDLE user = CreateFileA(SystemProviderPath().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    const Ended ended = RunCtl("install --copy");
    CloseHandle(user);
    EXPECT_EQ(ended.exitCode, 1U);
    EXPECT_EQ(ended.LastLine(), "Stop its user first: net stop tapisrv");
    EXPECT_TRUE(tapi.Calls().empty());
}

TEST_F(InstallTest, PutsAnErrorOfTapiIntoWords) {
    const SystemFileScope file(kProvider);
    FakeTapi tapi;
    tapi.Order("80000044");
    const Ended known = RunCtl("install");
    EXPECT_EQ(known.exitCode, 20U);
    EXPECT_EQ(known.lines, (Lines{"velmoractl: TAPI did not add velmora.tsp: LINEERR_NOMEM (0x80000044): there is not "
                                  "enough memory.",
                                  "See whether the telephony service can run: velmoractl status"}));
    tapi.Order("800000AB");
    EXPECT_EQ(RunCtl("install").lines.front(), "velmoractl: TAPI did not add velmora.tsp: 0x800000AB.");
}

TEST_F(InstallTest, PrintsNothingButErrorsWhenItIsToBeQuiet) {
    const SystemFileScope file(kProvider);
    FakeTapi tapi;
    EXPECT_TRUE(RunCtl("install --quiet").lines.empty());
    EXPECT_TRUE(RunCtl("install --copy --quiet").lines.empty());
    tapi.Order("80000044");
    EXPECT_EQ(RunCtl("install --quiet").lines.size(), 2U);
    const ProviderListScope list({kProvider});
    EXPECT_TRUE(RunCtl("install --quiet").lines.empty());
}

TEST_F(InstallTest, AsksForTheRightsOfAnAdministrator) {
    const SystemFileScope none;
    const FakeTapi tapi;
    EXPECT_EQ(RunWithoutRights("install"), 15U);
    EXPECT_EQ(RunWithoutRights("install --copy"), 15U);
    EXPECT_EQ(GetFileAttributesA(SystemProviderPath().c_str()), INVALID_FILE_ATTRIBUTES);
    const SystemFileScope file(kProvider);
    const ProviderListScope list({kProvider});
    EXPECT_EQ(RunWithoutRights("install"), 0U);
    EXPECT_TRUE(tapi.Calls().empty());
}

TEST_F(RemoveTest, RemovesEveryEntryOfTheProvider) {
    const FakeTapi tapi;
    const ProviderListScope list({kProvider, "unimdm.tsp", kProvider});
    const Ended ended = RunCtl("remove");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(tapi.Calls(), (Lines{"lineRemoveProvider 10, no window", "lineRemoveProvider 12, no window"}));
    EXPECT_EQ(ended.lines[0], "Removed velmora.tsp, permanent ID 10, from TAPI.");
    EXPECT_EQ(ended.lines[1], "Removed velmora.tsp, permanent ID 12, from TAPI.");
    EXPECT_TRUE(ended.Printed("net stop tapisrv"));
}

TEST_F(RemoveTest, ChangesNothingWhenTapiDoesNotKnowTheProvider) {
    const FakeTapi tapi;
    const ProviderListScope list({"unimdm.tsp"});
    const Ended ended = RunCtl("remove");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(ended.lines, (Lines{"TAPI does not know velmora.tsp. Nothing is changed."}));
    EXPECT_TRUE(tapi.Calls().empty());
}

TEST_F(RemoveTest, GoesOnBehindAnEntryThatTapiKeeps) {
    FakeTapi tapi;
    const ProviderListScope list({kProvider, kProvider});
    tapi.Order("80000048");
    const Ended ended = RunCtl("remove");
    EXPECT_EQ(ended.exitCode, 20U);
    EXPECT_EQ(tapi.Calls().size(), 2U);
    ASSERT_EQ(ended.lines.size(), 4U);
    EXPECT_TRUE(
        ended.lines[2].starts_with("velmoractl: TAPI did not remove velmora.tsp, permanent ID 11: "
                                   "LINEERR_OPERATIONFAILED (0x80000048)"))
        << ended.lines[2];
}

TEST_F(RemoveTest, PrintsNothingButErrorsWhenItIsToBeQuiet) {
    const FakeTapi tapi;
    EXPECT_TRUE(RunCtl("remove --quiet").lines.empty());
    const ProviderListScope list({kProvider});
    EXPECT_TRUE(RunCtl("remove --quiet").lines.empty());
    EXPECT_EQ(tapi.Calls().size(), 1U);
}

TEST_F(RemoveTest, AsksForTheRightsOfAnAdministrator) {
    const FakeTapi tapi;
    EXPECT_EQ(RunWithoutRights("remove"), 0U);
    const ProviderListScope list({kProvider});
    EXPECT_EQ(RunWithoutRights("remove"), 15U);
    EXPECT_TRUE(tapi.Calls().empty());
}

TEST_F(StatusTest, IsReadyWhenEverythingIsThere) {
    const SystemFileScope file(kProvider);
    const ProviderListScope list({"unimdm.tsp", kProvider});
    const ServiceScope service(SERVICE_DEMAND_START);
    StoreSettings("5050");
    const Ended ended = RunCtl("status");
    EXPECT_EQ(ended.exitCode, 0U);
    ASSERT_EQ(ended.lines.size(), 6U);
    EXPECT_TRUE(ended.lines[0].ends_with("\\velmora.tsp, version 2.0.3, 64-bit")) << ended.lines[0];
    EXPECT_EQ(ended.lines[1], "TAPI      knows the provider, with the permanent ID 11");
    EXPECT_TRUE(ended.lines[2].starts_with("service   the telephony service is stopped;")) << ended.lines[2];
    EXPECT_EQ(ended.lines[3], "settings  address 127.0.0.1, port 5050, user 40@example.com, encrypt off");
    EXPECT_TRUE(ended.lines[5].starts_with("OK: ")) << ended.lines[5];
    EXPECT_FALSE(ended.Printed(kUserPassword));
}

TEST_F(StatusTest, TellsEachKindOfNotReadyByItsExitCode) {
    const SystemFileScope none;
    EXPECT_EQ(RunCtl("status").exitCode, 16U);
    const SystemFileScope program("velmoractl.exe");
    EXPECT_EQ(RunCtl("status").exitCode, 17U);
    const SystemFileScope file(kProvider);
    EXPECT_EQ(RunCtl("status").exitCode, 18U);
    const ProviderListScope list({kProvider});
    EXPECT_EQ(RunCtl("status").exitCode, 19U);
    {
        const ServiceScope disabled(SERVICE_DISABLED);
        EXPECT_EQ(RunCtl("status").exitCode, 19U);
    }
    const ServiceScope service(SERVICE_AUTO_START);
    EXPECT_EQ(RunCtl("status").exitCode, 4U);
    StoreSettings("abc");
    const Ended ended = RunCtl("status");
    EXPECT_EQ(ended.exitCode, 4U);
    EXPECT_EQ(ended.LastLine(), "FAILED: port \"abc\" is no number.");
    StoreSettings("443");
    EXPECT_EQ(RunCtl("status").exitCode, 0U);
}

TEST_F(StatusTest, PrintsOneJsonObjectWhenAsked) {
    const SystemFileScope none;
    const Ended ended = RunCtl("status --json");
    EXPECT_EQ(ended.exitCode, 16U);
    ASSERT_EQ(ended.lines.size(), 1U);
    EXPECT_TRUE(ended.lines[0].starts_with(R"({"result": "failed", "exitCode": 16, )")) << ended.lines[0];
}

TEST_F(StatusTest, ChangesNothing) {
    RunCtl("status");
    EXPECT_FALSE(registry.HasValue("port"));
    EXPECT_EQ(GetFileAttributesA(SystemProviderPath().c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(InstallCommands, RefuseAWrongCommandLine) {
    for (const char* arguments : {"install now", "install --nosuch", "install --quiet=1", "remove 1", "remove --copy",
                                  "status 1", "status --quiet"}) {
        EXPECT_EQ(RunCtl(arguments).exitCode, 2U) << arguments;
    }
}

TEST(StateOfService, TellsWhatIsThere) {
    EXPECT_EQ(StateOfService("velmora-no-such-service"), ServiceState::kMissing);
    EXPECT_EQ(StateOfService("RpcSs"), ServiceState::kRunning);
}

TEST(PeHeaderOf, ReadsRealFiles) {
    EXPECT_TRUE(PeHeaderOf(PathBesideProgram(kProvider))->IsLibraryFor64Bit());
    EXPECT_FALSE(PeHeaderOf(PathBesideProgram("velmoractl.exe"))->IsLibraryFor64Bit());
    EXPECT_FALSE(PeHeaderOf(PathBesideProgram("build.ninja")));
    EXPECT_FALSE(PeHeaderOf(PathBesideProgram("nosuch.tsp")));
}

TEST(FileVersionOf, IsEmptyWithoutOne) {
    EXPECT_EQ(FileVersionOf(PathBesideProgram("fake_tapi32.dll")), "");
    EXPECT_EQ(FileVersionOf(PathBesideProgram("nosuch.tsp")), "");
}

TEST(IsAdministrator, TellsWhetherTheGroupIsThere) {
    EXPECT_TRUE(IsAdministrator(Token(true).handle));
    EXPECT_FALSE(IsAdministrator(Token(false).handle));
}

TEST(IsAdministrator, IsFalseOfNoToken) {
    EXPECT_FALSE(IsAdministrator(nullptr));
}

}  // namespace
}  // namespace velmora::ctl
