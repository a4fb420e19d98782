#include "tests/provider/provider_test.h"
#include "tests/support/guarded_buffer.h"

namespace velmora {
namespace {

constexpr LONG kIncompatibleLineVersion = static_cast<LONG>(0x8000000C);
constexpr LONG kIncompatiblePhoneVersion = static_cast<LONG>(0x90000003);

// The identity that TAPI knows the line by; it is made of the IDs handed over at initialisation.
uint32_t PermanentLineId(const ProviderHost& provider, DWORD deviceId) {
    GuardedBuffer caps(kLineDevCapsBytes);
    caps.SetWord(offsetof(LINEDEVCAPS, dwTotalSize), kLineDevCapsBytes);
    EXPECT_EQ(provider.lineGetDevCaps(deviceId, kTspiVersion, 0, caps.As<LINEDEVCAPS>()), 0);
    return caps.Word(offsetof(LINEDEVCAPS, dwPermanentLineID));
}

TEST_F(ProviderTest, InitLogsInAtThePbxAndIgnoresVersionCountsAndOptions) {
    GuardedBuffer options(sizeof(DWORD));
    running = true;
    EXPECT_EQ(provider.providerInit(0, kProviderId, kLineDeviceIdBase, kPhoneDeviceIdBase, 0, 99, nullptr,
                                    options.As<DWORD>()),
              0);
    EXPECT_EQ(options.Word(0), 0xCCCCCCCC);
    const ReceivedFrame frame = pbx.WaitForFrame(0);
    EXPECT_EQ(frame.invokeId, 1U);
    EXPECT_EQ(ElementText(frame.xml, "tns:userName"), kUsername);
}

TEST_F(ProviderTest, ASecondInitWithoutShutdownChangesNothing) {
    LogIn();
    EXPECT_EQ(Recorded([&] { Init(kProviderId + 1, kLineDeviceIdBase + 1); }), LogTexts());
    EXPECT_EQ(PermanentLineId(provider, kLineDeviceIdBase), 0x23450000U);

    // A second session would have logged in before this call.
    MakeCall(L"123");
    EXPECT_EQ(ElementText(pbx.WaitForFrame(2).xml, "calledDirectoryNumber"), "123");
    EXPECT_EQ(pbx.Connections(), 1U);
}

TEST_F(ProviderTest, InitAfterShutdownStartsANewSessionWithTheNewIds) {
    LogIn();
    Stop();
    EXPECT_TRUE(pbx.WaitForEnd());

    Init(0x7, 2);
    const ReceivedFrame login = pbx.WaitForFrame(2);
    EXPECT_EQ(login.connection, 1U);
    EXPECT_EQ(login.invokeId, 3U);
    EXPECT_NE(login.xml.find("<StartApplicationSession "), std::string::npos);
    EXPECT_EQ(PermanentLineId(provider, 2), 0x00070000U);
    WaitUntilDispatched();

    // The log, open since the first session, has this one's start: the first took place before its path was known.
    EXPECT_EQ(log.TextsOfLevel(1), (LogTexts{"Provider Init"}));
}

TEST_F(ProviderTest, ShutdownBeforeInitReturnsZero) {
    EXPECT_EQ(provider.providerShutdown(kTspiVersion, kProviderId), 0);
    Init();
    EXPECT_EQ(pbx.WaitForFrame(0).invokeId, 1U);
}

TEST_F(ProviderTest, ShutdownEndsTheConnectionAndIsRecordedEvenWhenNothingRuns) {
    LogIn();
    EXPECT_EQ(Recorded([&] { Stop(); }), (LogTexts{"TSPI_providerShutdown"}));
    EXPECT_TRUE(pbx.WaitForEnd());
    EXPECT_EQ(pbx.Frames().size(), 2U);
    EXPECT_EQ(Recorded([&] { Stop(); }), (LogTexts{"TSPI_providerShutdown"}));
    EXPECT_EQ(log.TextsOfLevel(5).back(), "TSPI_providerShutdown");
}

TEST_F(ProviderTest, EnumeratesOneLineAndOnePhoneEvenBeforeInit) {
    const auto enumerate = [&] {
        GuardedBuffer lines(sizeof(DWORD));
        GuardedBuffer phones(sizeof(DWORD));
        EXPECT_EQ(
            provider.providerEnumDevices(kProviderId, lines.As<DWORD>(), phones.As<DWORD>(), nullptr, nullptr, nullptr),
            0);
        EXPECT_EQ(lines.Word(0), 1U);
        EXPECT_EQ(phones.Word(0), 1U);
    };
    enumerate();
    LogIn();
    EXPECT_EQ(Recorded(enumerate), (LogTexts{"TSPI_providerEnumDevices"}));
    EXPECT_EQ(log.Records().back().level, 5);
}

TEST_F(ProviderTest, TheLineSettlesOnTheLowerOfTheHighVersionAndItsOwn) {
    struct Negotiation {
        DWORD low;
        DWORD high;
        LONG result;
        DWORD version;
    };
    constexpr DWORD kUntouched = 0xCCCCCCCC;
    const Negotiation negotiations[] = {
        {0x00010004, 0x00030000, 0, 0x00020002},
        {0x00010004, 0x00010004, 0, 0x00010004},
        {0x00020002, 0x00020002, 0, 0x00020002},
        {0x00020002, 0x00020001, 0, 0x00020001},
        {0, 0, 0, 0},
        {0, 0xFFFFFFFF, 0, 0x00020002},
        {0x00020003, 0x00030000, kIncompatibleLineVersion, kUntouched},
        {0x80000000, 0xFFFFFFFF, kIncompatibleLineVersion, kUntouched},
    };
    const auto negotiate = [&] {
        for (const Negotiation& negotiation : negotiations) {
            SCOPED_TRACE(testing::Message() << negotiation.low << " to " << negotiation.high);
            GuardedBuffer version(sizeof(DWORD));
            EXPECT_EQ(provider.lineNegotiateTSPIVersion(99, negotiation.low, negotiation.high, version.As<DWORD>()),
                      negotiation.result);
            EXPECT_EQ(version.Word(0), negotiation.version);
        }
    };
    negotiate();
    LogIn();
    EXPECT_EQ(Recorded(negotiate), LogTexts()) << "this entry point leaves no trace";
}

TEST_F(ProviderTest, ThePhoneInsistsOnItsOwnVersion) {
    struct Negotiation {
        DWORD low;
        DWORD high;
        LONG result;
        DWORD version;
        const char* record;
    };
    constexpr DWORD kUntouched = 0xCCCCCCCC;
    const Negotiation negotiations[] = {
        {0x00010004, 0x00020002, 0, 0x00020002,
         "TSPI_phoneNegotiateTSPIVersion dwLowVersion=65540 dwHighVersion=131074 myVersion=131074"},
        {0x00030000, 0x00030000, 0, 0x00020002,
         "TSPI_phoneNegotiateTSPIVersion dwLowVersion=196608 dwHighVersion=196608 myVersion=131074"},
        {0x80000000, 0xFFFFFFFF, 0, 0x00020002,
         "TSPI_phoneNegotiateTSPIVersion dwLowVersion=2147483648 dwHighVersion=4294967295 myVersion=131074"},
        {0x00010004, 0x00020001, kIncompatiblePhoneVersion, kUntouched,
         "TSPI_phoneNegotiateTSPIVersion dwLowVersion=65540 dwHighVersion=131073 myVersion=131074"},
        {0, 0, kIncompatiblePhoneVersion, kUntouched,
         "TSPI_phoneNegotiateTSPIVersion dwLowVersion=0 dwHighVersion=0 myVersion=131074"},
    };
    LogIn();
    for (const Negotiation& negotiation : negotiations) {
        SCOPED_TRACE(negotiation.record);
        GuardedBuffer version(sizeof(DWORD));
        EXPECT_EQ(Recorded([&] {
                      EXPECT_EQ(provider.phoneNegotiateTSPIVersion(99, negotiation.low, negotiation.high,
                                                                   version.As<DWORD>()),
                                negotiation.result);
                  }),
                  (LogTexts{negotiation.record}));
        EXPECT_EQ(version.Word(0), negotiation.version);
        EXPECT_EQ(log.Records().back().level, 5);
    }
}

TEST_F(ProviderTest, NamesItselfAsItsUiDll) {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(provider.module, path, MAX_PATH);
    const auto identify = [&] {
        GuardedBuffer name(MAX_PATH * sizeof(wchar_t));
        EXPECT_EQ(provider.providerUIIdentify(name.As<wchar_t>()), 0);
        EXPECT_STREQ(name.As<wchar_t>(), path);
    };
    identify();
    LogIn();
    EXPECT_EQ(Recorded(identify), (LogTexts{"TSPI_providerUIIdentify"}));
    EXPECT_EQ(log.Records().back().level, 5);
}

}  // namespace
}  // namespace velmora
