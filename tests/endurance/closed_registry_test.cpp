#include "tests/provider/provider_test.h"
#include "tests/support/guarded_buffer.h"
#include "tests/support/import_hook.h"
#include "tests/support/read_only_key.h"

namespace velmora {
namespace {

constexpr size_t kSettings = 11;
constexpr char kKeyUnreadable[] = "Cannot open registry for reading";

LSTATUS WINAPI RefuseToRead(HKEY, LPCSTR, DWORD*, DWORD*, BYTE*, DWORD*) {
    return ERROR_ACCESS_DENIED;
}

// The provider in a process that may not read its settings.
class ClosedRegistryTest : public ProviderTest {
protected:
    // The provider runs, without an account: what a program asks of it is answered, and so is a shutdown.
    void ExpectServiceWithoutAccount() {
        const HDRVCALL call = MakeCall(L"4711");
        EXPECT_EQ(provider.lineCloseCall(call), 0);
        GuardedBuffer caps(kLineDevCapsBytes);
        caps.SetWord(offsetof(LINEDEVCAPS, dwTotalSize), kLineDevCapsBytes);
        EXPECT_EQ(provider.lineGetDevCaps(0, kTspiVersion, 0, caps.As<LINEDEVCAPS>()), 0);
        Stop();
    }

    // The level 1 records of a start at which no setting could be read.
    static LogTexts Faults(const std::vector<std::string>& settings) {
        LogTexts faults = {"Provider Init"};
        faults.insert(faults.end(), settings.begin(), settings.end());
        return faults;
    }
};

TEST_F(ClosedRegistryTest, LeavesAProviderThatNeitherLogsNorConnects) {
    {
        const ClosedKey closed;
        Init();
        ExpectServiceWithoutAccount();
    }
    EXPECT_FALSE(log.Exists());
    EXPECT_EQ(pbx.Connections(), 0U);
    LogIn();
}

TEST_F(ClosedRegistryTest, IsRecordedForEachSettingOnceThereIsALog) {
    LogIn();
    Stop();
    {
        const ClosedKey closed;
        Init();
        ExpectServiceWithoutAccount();
    }
    LogTexts texts = log.TextsOfLevel(1);
    ASSERT_GE(texts.size(), 1 + kSettings);
    texts.resize(1 + kSettings);
    EXPECT_EQ(texts, Faults(LogTexts(kSettings, kKeyUnreadable)));
    LogIn();
}

TEST_F(ClosedRegistryTest, IsRecordedByNameWhereOnlyTheValuesAreClosed) {
    LogIn();
    Stop();
    HookImport(provider.module, "advapi32.dll", "RegQueryValueExA", RefuseToRead);
    Init();
    ExpectServiceWithoutAccount();
    LogTexts expected;
    for (const char* name : {"username", "password", "domain", "address", "port", "encrypt", "autooriginate",
                             "loglevel", "loglength", "logfile", "guid"}) {
        expected.push_back(std::string("Cannot read registry key ") + name);
    }
    LogTexts texts = log.TextsOfLevel(1);
    ASSERT_GE(texts.size(), 1 + kSettings);
    texts.resize(1 + kSettings);
    EXPECT_EQ(texts, Faults(expected));
}

}  // namespace
}  // namespace velmora
