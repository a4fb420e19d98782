// velmoractl log as its user meets it. The log is the provider's own where it matters: the provider runs in this
// process then, over pbxsim.exe. That Windows refuses to open the log of a running service is brought about by a file
// that is open in the same way: Wine does not refuse it.

#include <sddl.h>

#include <cstdio>
#include <memory>

#include "config/registry.h"
#include "tests/support/log_reader.h"
#include "tests/support/provider_host.h"
#include "tests/support/read_only_key.h"
#include "tests/tools/velmoractl/velmoractl_test.h"

namespace velmora::ctl {
namespace {

constexpr DWORD kProviderId = 1;
constexpr DWORD kDeadlineMs = 30000;
constexpr char kFollowing[] = "--   net start tapisrv";  // the last line before the log itself

void CALLBACK TakeCompletion(DRV_REQUESTID /*request*/, LONG /*result*/) {}
void CALLBACK TakeLineEvent(HTAPILINE /*line*/, HTAPICALL /*call*/, DWORD /*message*/, DWORD_PTR /*parameter1*/,
                            DWORD_PTR /*parameter2*/, DWORD_PTR /*parameter3*/) {}

// The provider in this process, from its start to its shutdown.
class RunningProvider {
public:
    RunningProvider() {
        DWORD options = 0;
        EXPECT_EQ(host.providerInit(kTspiVersion, kProviderId, 0, 0, 1, 1, TakeCompletion, &options), 0);
    }
    ~RunningProvider() { EXPECT_EQ(host.providerShutdown(kTspiVersion, kProviderId), 0); }
    RunningProvider(const RunningProvider&) = delete;
    RunningProvider& operator=(const RunningProvider&) = delete;

    // Places a call.
    void Call(const wchar_t* number) {
        HDRVLINE line = nullptr;
        HDRVCALL call = nullptr;
        EXPECT_EQ(host.lineOpen(0, nullptr, &line, kTspiVersion, TakeLineEvent), 0);
        EXPECT_GT(host.lineMakeCall(1, line, nullptr, &call, number, 0, nullptr), 0);
    }

private:
    ProviderHost host;
};

class LogTest : public VelmoractlTest {
protected:
    LogTest() { DeleteFileA(path.c_str()); }
    ~LogTest() override { DeleteFileA(path.c_str()); }

    void WriteLogFile(const ByteString& bytes) const {
        const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "wb"), std::fclose);
        EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file.get()), bytes.size());
    }

    // The stored text of a setting.
    static ByteString Stored(const ByteString& name) {
        const RegistryValue value = ReadRegistryValue(name);
        return value.bytes.substr(0, value.bytes.find('\0'));
    }

    ByteString path = PathBesideProgram("log_program_test.log");
};

class LogShowTest : public LogTest {};
class LogOnTest : public LogTest {};
class LogOffTest : public LogTest {};

TEST_F(LogShowTest, ShowsWhatTheProviderHasWritten) {
    RunningPbx pbx("--user 40 --domain example.com --password " + ByteString(kUserPassword));
    StoreSettings(pbx.port);
    registry.Set("loglevel", "5");
    registry.Set("logfile", path);
    LogReader log(path);
    {
        RunningProvider provider;
        provider.Call(L"4930");
        EXPECT_TRUE(log.WaitUntil([](const std::vector<LogRecord>& records) {
            return std::ranges::any_of(records, [](const LogRecord& record) {
                return record.text.starts_with("CSTA Rx") && record.text.find("MakeCallResponse") != ByteString::npos;
            });
        }));
    }
    const Ended ended = RunCtl("log");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_TRUE(ended.Printed("  5  -> StartApplicationSession: user 40, password ***, domain example.com"));
    EXPECT_TRUE(ended.Printed("<tns:password>***</tns:password>"));
    EXPECT_FALSE(ended.Printed(kUserPassword));
    EXPECT_TRUE(ended.Printed("  5  TSPI_lineMakeCall"));
    EXPECT_TRUE(ended.Printed("  5  -> MakeCall: from 40@example.com to 4930"));
    EXPECT_TRUE(ended.Printed("<- MakeCallResponse: call 1 of device 40@example.com  (answers the MakeCall of "));
    EXPECT_TRUE(ended.Printed("  <calledDirectoryNumber>4930</calledDirectoryNumber>"));
    EXPECT_TRUE(ended.LastLine().find("4930 from 40@example.com: call 1 of device 40@example.com after ") !=
                ByteString::npos)
        << ended.LastLine();

    const Ended brief = RunCtl("log show --brief");
    EXPECT_TRUE(brief.Printed("-> MakeCall: from 40@example.com to 4930"));
    EXPECT_FALSE(brief.Printed("<calledDirectoryNumber>"));
}

TEST_F(LogShowTest, ShowsTheFileThatIsNamed) {
    WriteLogFile("[0:00:00:001]:1 one\r\r\n[0:00:00:002]:3 two\r\r\n[0:00:01:003]:5 CSTA Rx: <a>\r\r\n<b/></a>");
    const Ended ended = RunCtl("log show " + path);
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(ended.lines,
              (Lines{"0:00:00.001  1  one", "0:00:00.002  3  two", "0:00:01.003  5  <- a", "                      <a>",
                     "                        <b/>", "                      </a>"}));
}

TEST_F(LogShowTest, ShowsRecordsUpToALevel) {
    WriteLogFile("[0:00:00:001]:1 one\r\r\n[0:00:00:002]:3 two\r\r\n[0:00:00:003]:2 three\r\r\n");
    EXPECT_EQ(RunCtl("log show " + path + " --level 2").lines, (Lines{"0:00:00.001  1  one", "0:00:00.003  2  three"}));
}

TEST_F(LogShowTest, ReadsALogThatIsLongerThanOneRead) {
    ByteString log;
    for (int count = 0; count < 3000; ++count) log += "[0:00:00:001]:5 a record of some forty bytes in all\r\r\n";
    WriteLogFile(log);
    // Of all that is printed, a pipe holds less; the lines are read as they come.
    EXPECT_EQ(RunCtl("log show " + path).lines.size(), 3000U);
}

TEST_F(LogShowTest, SaysThatTheServiceKeepsTheLogToItself) {
    registry.Set("logfile", path);
    const HANDLE writer =
        CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    const Ended ended = RunCtl("log");
    CloseHandle(writer);
    EXPECT_EQ(ended.exitCode, 9U);
    EXPECT_EQ(ended.lines,
              (Lines{"velmoractl: " + path +
                         " is being written, and nobody else may read it until the telephony "
                         "service stops.",
                     "Stop it first: net stop tapisrv", "Or see it as it is written: velmoractl log --follow"}));
}

TEST_F(LogShowTest, SaysWhyThereIsNothingToShow) {
    EXPECT_EQ(RunCtl("log").lines,
              (Lines{"velmoractl: The trace log is off: no logfile is set.", "Turn it on with: velmoractl log on"}));
    registry.Set("logfile", path);
    const Ended missing = RunCtl("log");
    EXPECT_EQ(missing.exitCode, 9U);
    EXPECT_EQ(missing.lines.front(), "velmoractl: " + path + " is not there.");
    EXPECT_TRUE(missing.LastLine().starts_with("The provider makes the log with its first record:"));
    EXPECT_EQ(RunCtl("log show " + path + "x").lines,
              (Lines{"velmoractl: " + path + "x is not there.", "The log that is set is shown by: velmoractl log"}));
    WriteLogFile("no log at all\r\n");
    const Ended other = RunCtl("log");
    EXPECT_EQ(other.exitCode, 9U);
    EXPECT_EQ(other.lines.front(), "velmoractl: " + path + " holds no record of the trace log.");
    registry.Set("logfile", R"(\\.\pipe\velmoractl-log-1)");
    const Ended tapped = RunCtl("log");
    EXPECT_EQ(tapped.exitCode, 9U);
    EXPECT_EQ(tapped.lines.front(), "velmoractl: The trace log goes to another velmoractl, not to a file.");
}

TEST_F(LogOnTest, StoresWhatTheProviderNeedsForEveryMessage) {
    const Ended ended = RunCtl("log on " + path);
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(Stored("logfile"), path);
    EXPECT_EQ(Stored("loglevel"), "5");
    EXPECT_EQ(Stored("loglength"), "100000");
    EXPECT_EQ(ended.lines[0], "logfile = " + path);
    EXPECT_EQ(ended.lines[1], "loglevel = 5");
    EXPECT_EQ(ended.lines[2], "loglength = 100000");
    EXPECT_TRUE(ended.Printed("net start tapisrv"));
    EXPECT_TRUE(ended.Printed("the log holds the user's password"));
}

TEST_F(LogOnTest, StoresLevelAndLengthAsAskedFor) {
    EXPECT_EQ(RunCtl("log on " + path + " --level 1 --length 50").exitCode, 0U);
    EXPECT_EQ(Stored("loglevel"), "1");
    EXPECT_EQ(Stored("loglength"), "50");
}

TEST_F(LogOnTest, StoresTheWholePathOfAFile) {
    EXPECT_EQ(RunCtl("log on velmora.log").exitCode, 0U);
    char whole[MAX_PATH] = "";
    GetFullPathNameA("velmora.log", MAX_PATH, whole, nullptr);
    EXPECT_EQ(Stored("logfile"), whole);
}

TEST_F(LogOnTest, MakesAFolderWhenNoFileIsNamed) {
    char data[MAX_PATH] = "";
    GetEnvironmentVariableA("ProgramData", data, MAX_PATH);
    const ByteString folder = ByteString(data) + "\\Velmora";
    RemoveDirectoryA(folder.c_str());
    EXPECT_EQ(RunCtl("log on").exitCode, 0U);
    EXPECT_EQ(Stored("logfile"), folder + "\\trace.log");
    EXPECT_NE(GetFileAttributesA(folder.c_str()), INVALID_FILE_ATTRIBUTES);
    RemoveDirectoryA(folder.c_str());
}

TEST_F(LogOnTest, WarnsOfAFolderThatIsNotThere) {
    const Ended ended = RunCtl(R"(log on C:\nosuch\velmora.log)");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_TRUE(ended.Printed(R"(Mind: the folder C:\nosuch\ is not there, and the provider makes none.)"));
    EXPECT_FALSE(RunCtl("log on " + path).Printed("Mind: the folder"));
}

TEST_F(LogOnTest, LogsWhatTheProviderThenDoes) {
    EXPECT_EQ(RunCtl("log on " + path).exitCode, 0U);
    registry.Set("address", "127.0.0.1");
    registry.Set("port", "1");
    { const RunningProvider provider; }
    EXPECT_TRUE(RunCtl("log").Printed("TSPI_providerShutdown"));
}

TEST_F(LogOffTest, MakesTheSettingsOfTheLogEmpty) {
    RunCtl("log on " + path);
    const Ended ended = RunCtl("log off");
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_EQ(ended.lines[0], "logfile is empty now");
    EXPECT_EQ(ended.lines[1], "loglevel = 0  (default)");
    EXPECT_EQ(ended.lines[2], "loglength = 1000  (default)");
    EXPECT_EQ(Stored("logfile"), "");
    EXPECT_EQ(Stored("loglevel"), "");
    EXPECT_EQ(Stored("loglength"), "");
}

TEST_F(LogTest, AsksForTheRightsOfAnAdministrator) {
    StoreSettings("443");
    const ReadOnlyKey readOnly;
    for (const char* arguments : {"log on velmora.log", "log off", "log --follow"}) {
        const Ended ended = RunCtl(arguments);
        EXPECT_EQ(ended.exitCode, 10U) << arguments;
        EXPECT_TRUE(ended.LastLine().ends_with("Run velmoractl as administrator.")) << ended.LastLine();
    }
}

TEST_F(LogTest, RefusesAWrongCommandLine) {
    for (const char* arguments :
         {"log nosuch", "log off x", "log show a b", "log --level x", "log --level -1", "log --level 2147483648",
          "log --length 5", "log --follow show", "log --follow --length 5", "log on --length 2147483648"}) {
        EXPECT_EQ(RunCtl(arguments).exitCode, 2U) << arguments;
    }
    EXPECT_EQ(ReadRegistryValue("logfile").status, RegistryStatus::kNoKey);
}

// A console for this process and those that it starts, so that a Ctrl+C can be sent to them.
class ConsoleScope {
public:
    ConsoleScope() {
        FreeConsole();
        EXPECT_TRUE(AllocConsole());
        SetConsoleCtrlHandler(Ignore, TRUE);
    }
    ~ConsoleScope() {
        SetConsoleCtrlHandler(Ignore, FALSE);
        FreeConsole();
    }
    ConsoleScope(const ConsoleScope&) = delete;
    ConsoleScope& operator=(const ConsoleScope&) = delete;

private:
    static BOOL WINAPI Ignore(DWORD /*event*/) { return TRUE; }
};

// velmoractl log --follow, which has changed the registry and waits.
class LogFollowTest : public LogTest {
protected:
    void Start(const ByteString& arguments = {}) {
        program = std::make_unique<ChildProcess>("velmoractl.exe", "log --follow " + arguments);
        EXPECT_EQ(program->ReadLineWith(kFollowing), kFollowing);
    }

    // As the provider writes: to what logfile names, in text mode.
    static std::FILE* OpenAsProvider() {
        std::FILE* file = std::fopen(Stored("logfile").c_str(), "w");
        EXPECT_NE(file, nullptr);
        return file;
    }

    static void WriteRecord(std::FILE* file, const char* record) {
        EXPECT_GE(std::fputs(record, file), 0);
        EXPECT_EQ(std::fflush(file), 0);
    }

    // Presses Ctrl+C; gives the rest of what is printed, and the exit code.
    Ended Interrupt() {
        EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
        return ToEnd(*program);
    }

    ConsoleScope console;
    std::unique_ptr<ChildProcess> program;
};

TEST_F(LogFollowTest, ShowsWhatTheProviderWritesWhileItRuns) {
    RunningPbx pbx("--user 40 --domain example.com --password " + ByteString(kUserPassword));
    StoreSettings(pbx.port);
    Start("--brief");
    {
        RunningProvider provider;
        EXPECT_FALSE(program->ReadLineWith("-> StartApplicationSession: user 40, password ***").empty());
        provider.Call(L"4930");
        const ByteString answer = program->ReadLineWith("<- MakeCallResponse: call 1 of device 40@example.com");
        EXPECT_NE(answer.find("(answers the MakeCall of "), ByteString::npos) << answer;
    }
    const Ended ended = Interrupt();
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_TRUE(ended.Printed("4930 from 40@example.com: call 1 of device 40@example.com after "));
}

TEST_F(LogFollowTest, LeavesTheSettingsOfTheLogAsTheyWere) {
    registry.Set("logfile", "C:\\velmora.log");
    registry.Set("loglevel", "2");
    Start();
    EXPECT_TRUE(Stored("logfile").starts_with(R"(\\.\pipe\velmoractl-log-)"));
    EXPECT_EQ(Stored("loglevel"), "5");
    EXPECT_EQ(Stored("loglength"), "2147483647");
    const Ended ended = Interrupt();
    EXPECT_EQ(ended.exitCode, 0U);
    EXPECT_TRUE(ended.LastLine().starts_with("-- The settings of the log are as they were.")) << ended.LastLine();
    EXPECT_EQ(Stored("logfile"), "C:\\velmora.log");
    EXPECT_EQ(Stored("loglevel"), "2");
    EXPECT_FALSE(registry.HasValue("loglength"));
}

TEST_F(LogFollowTest, SaysThatItWaitsForAnotherOne) {
    Start();
    const ByteString waits = "Another velmoractl reads the trace log; this one waits for it, a minute at most.";
    {
        ChildProcess second("velmoractl.exe", "log --follow");
        EXPECT_EQ(second.ReadLine(), waits);
    }
    EXPECT_EQ(Interrupt().exitCode, 0U);
}

TEST_F(LogFollowTest, AsksTheProviderForRecordsUpToALevel) {
    Start("--level 2");
    EXPECT_EQ(Stored("loglevel"), "2");
    EXPECT_EQ(Interrupt().exitCode, 0U);
}

TEST_F(LogFollowTest, GoesOnWithTheNextStartOfTheProvider) {
    Start();
    std::FILE* first = OpenAsProvider();
    WriteRecord(first, "[0:00:00:001]:5 first run\r\n");
    EXPECT_EQ(program->ReadLine(), "0:00:00.001  5  first run");
    WriteRecord(first, "[0:00:00:002]:5 CSTA Rx: <open>\r\n");
    std::fclose(first);
    EXPECT_EQ(program->ReadLine(), "0:00:00.002  5  <- open");
    EXPECT_FALSE(program->ReadLineWith("-- The provider has ended.").empty());

    std::FILE* second = nullptr;
    const ULONGLONG endMs = GetTickCount64() + kDeadlineMs;
    while (second == nullptr && GetTickCount64() < endMs) second = std::fopen(Stored("logfile").c_str(), "w");
    ASSERT_NE(second, nullptr);
    WriteRecord(second, "[0:00:00:000]:5 second run\r\n");
    EXPECT_EQ(program->ReadLine(), "0:00:00.000  5  second run");
    EXPECT_EQ(Interrupt().exitCode, 0U);
    std::fclose(second);
}

TEST_F(LogFollowTest, LetsTheAccountOfTheServiceWrite) {
    Start();
    const HANDLE pipe = CreateFileA(Stored("logfile").c_str(), GENERIC_WRITE | READ_CONTROL, 0, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    BYTE descriptor[1024];
    DWORD needed = 0;
    EXPECT_TRUE(GetKernelObjectSecurity(pipe, DACL_SECURITY_INFORMATION, descriptor, sizeof(descriptor), &needed));
    CloseHandle(pipe);
    char* text = nullptr;
    ConvertSecurityDescriptorToStringSecurityDescriptorA(descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text,
                                                         nullptr);
    // FILE_GENERIC_WRITE and FILE_READ_ATTRIBUTES, which CreateFile asks for with GENERIC_WRITE.
    EXPECT_NE(ByteString(text).find("(A;;0x120196;;;NS)"), ByteString::npos) << text;
    LocalFree(text);
    EXPECT_EQ(Interrupt().exitCode, 0U);
}

TEST_F(LogFollowTest, KeepsARecordThatComesInPieces) {
    Start();
    std::FILE* file = OpenAsProvider();
    for (const char* piece : {"[0:00:00:0", "01]:5 CSTA Tx: <MakeCall>\r\n", "<a>1</a>", "</MakeCall>\r\n"}) {
        WriteRecord(file, piece);
    }
    EXPECT_EQ(program->ReadLine(), "0:00:00.001  5  -> MakeCall");
    EXPECT_EQ(program->ReadLine(), "                      <MakeCall>");
    EXPECT_EQ(program->ReadLine(), "                        <a>1</a>");
    std::fclose(file);
    EXPECT_EQ(Interrupt().exitCode, 0U);
}

}  // namespace
}  // namespace velmora::ctl
