#include <cstdio>

#include "tests/provider/provider_test.h"
#include "tests/support/csta_answers.h"
#include "tests/support/process_use.h"

namespace velmora {
namespace {

// A file held open by this process as another program would hold it.
class HeldFile {
public:
    HeldFile(const std::string& path, DWORD access, DWORD sharing, DWORD creation)
        : file(CreateFileA(path.c_str(), access, sharing, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(file, INVALID_HANDLE_VALUE) << GetLastError();
    }
    ~HeldFile() { CloseHandle(file); }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    HANDLE file;
};

// A trace log that cannot be written, or not as it should be, does not disturb calls.
class LogSurroundingsTest : public ProviderTest {
protected:
    LogSurroundingsTest() {
        pbx.onFrame = [this](const ReceivedFrame& frame) { Answer(frame); };
    }

    void Answer(const ReceivedFrame& frame) {
        if (frame.xml.find("<MakeCall ") == std::string::npos) return;
        pbx.SendFrame(frame.invokeId, CallMade("C-" + ElementText(frame.xml, "calledDirectoryNumber"), "D"));
    }

    // A call is placed, bound to its answer and closed.
    void ExpectCall(const std::string& number) {
        const HDRVCALL call = MakeCall(Wide(number));
        WaitForMakeCall(number);
        WaitUntilDispatched();
        EXPECT_EQ(ElementText(CloseCall(call), "callID"), "C-" + number);
    }

    void ExpectCallsWithLogAt(const std::string& path) {
        registry.Set("logfile", path);
        LogIn();
        ExpectCall("4711");
    }
};

// Where every write fails for want of space. Wine gives this file of Linux's a path; Windows has none like it.
TEST_F(LogSurroundingsTest, CallsGoOnWithoutSpaceOnTheDiskAndNothingPilesUp) {
    constexpr size_t kRecords = 10000;
    constexpr size_t kNoiseBytes = 16384;
    const std::string path = R"(Z:\dev\full)";
    std::FILE* full = nullptr;
    ASSERT_EQ(fopen_s(&full, path.c_str(), "w"), 0);
    EXPECT_GE(std::fputs("one record", full), 0);
    EXPECT_NE(std::fflush(full), 0) << "there is space";
    static_cast<void>(std::fclose(full));
    ExpectCallsWithLogAt(path);
    const size_t before = HeapBytes();
    for (size_t count = 0; count < kRecords; ++count) provider.lineClose(nullptr);
    EXPECT_LE(HeapBytes(), before + kNoiseBytes);
    ExpectCall("4712");
}

TEST_F(LogSurroundingsTest, RecordsAreDroppedWhileAnotherHoldsTheFileAndWrittenAfterThat) {
    {
        const HeldFile held(log.Path(), GENERIC_WRITE, 0, CREATE_ALWAYS);
        ExpectCallsWithLogAt(log.Path());
    }
    EXPECT_EQ(log.Bytes(), "");
    EXPECT_EQ(Recorded([&] { provider.lineClose(nullptr); }), (LogTexts{"TSPI_lineClose"}));
}

TEST_F(LogSurroundingsTest, CallsGoOnWhenTheLogIsAFolder) {
    const std::string folder = PathBesideProgram("soak_test_folder");
    RemoveDirectoryA(folder.c_str());
    EXPECT_NE(CreateDirectoryA(folder.c_str(), nullptr), 0);
    ExpectCallsWithLogAt(folder);
    ExpectCall("4712");
    Stop();
    EXPECT_NE(RemoveDirectoryA(folder.c_str()), 0) << "error " << GetLastError();
}

TEST_F(LogSurroundingsTest, CallsGoOnWhereNoFileCanBeMade) {
    const std::string path = R"(Z:\proc\velmora.log)";  // under Wine, a folder that even root cannot write to
    ExpectCallsWithLogAt(path);
    EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(LogSurroundingsTest, CallsGoOnWhenTheFileIsMovedAwayWhileItIsWritten) {
    LogReader moved(log.Path() + ".moved");
    ExpectCallsWithLogAt(log.Path());
    const bool gone = MoveFileA(log.Path().c_str(), moved.Path().c_str()) != 0;
    ExpectCall("4712");
    Stop();
    // Whoever may move it takes the rest of the log along: the file is not made anew.
    EXPECT_EQ(log.Exists(), !gone);
    EXPECT_EQ((gone ? moved : log).Texts().back(), "TSPI_providerShutdown");
}

TEST_F(LogSurroundingsTest, CallsGoOnWhenTheLogIsFull) {
    registry.Set("loglength", "3");
    ExpectCallsWithLogAt(log.Path());
    EXPECT_EQ(log.Records().size(), 3U);
    ExpectCall("4712");
    EXPECT_EQ(log.Records().size(), 3U);
}

}  // namespace
}  // namespace velmora
