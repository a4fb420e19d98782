#include <bit>

#include "tests/provider/provider_test.h"
#include "tests/support/guarded_buffer.h"

namespace velmora {
namespace {

static_assert(sizeof(LINEADDRESSSTATUS) == kLineAddressStatusBytes);

bool lineEventCalled = false;

void CALLBACK OnLineEvent(HTAPILINE /*line*/, HTAPICALL /*call*/, DWORD /*message*/, DWORD_PTR /*parameter1*/,
                          DWORD_PTR /*parameter2*/, DWORD_PTR /*parameter3*/) {
    lineEventCalled = true;
}

HDRVLINE OpenLine(const ProviderHost& provider, DWORD deviceId, uintptr_t tapiHandle) {
    HDRVLINE line = nullptr;
    EXPECT_EQ(provider.lineOpen(deviceId, std::bit_cast<HTAPILINE>(tapiHandle), &line, kTspiVersion, OnLineEvent), 0);
    return line;
}

TEST_F(ProviderTest, EveryOpenGivesTheSameLineHandle) {
    LogIn();
    HDRVLINE line = nullptr;
    EXPECT_EQ(Recorded([&] { line = OpenLine(provider, kLineDeviceIdBase, 0x1111); }), (LogTexts{"TSPI_lineOpen"}));
    EXPECT_NE(line, nullptr);
    EXPECT_EQ(OpenLine(provider, 99, 0x2222), line);
    EXPECT_EQ(Recorded([&] { EXPECT_EQ(provider.lineClose(line), 0); }), (LogTexts{"TSPI_lineClose"}));
    EXPECT_EQ(OpenLine(provider, kLineDeviceIdBase, 0x3333), line);
}

TEST_F(ProviderTest, ClosingTheLineKeepsItsCalls) {
    LogIn();
    const HDRVLINE line = OpenLine(provider, kLineDeviceIdBase, 0x1111);
    const HDRVCALL call = MakeCall(L"123");
    SendAndWait(WaitForMakeCall("123"),
                "<MakeCallResponse><callingDevice><callID>7</callID></callingDevice>"
                "</MakeCallResponse>");
    EXPECT_EQ(provider.lineClose(line), 0);
    EXPECT_EQ(ElementText(CloseCall(call), "callID"), "7");
}

TEST_F(ProviderTest, ReportsNoEventOfACallToTapi) {
    LogIn();
    OpenLine(provider, kLineDeviceIdBase, 0x1111);
    const HDRVCALL call = MakeCall(L"123");
    SendAndWait(WaitForMakeCall("123"), "<MakeCallResponse/>");
    SendAndWait(0, "<DeliveredEvent/>");
    SendAndWait(0, "<ConnectionClearedEvent/>");
    CloseCall(call);
    SendAndWait(0, "<ClearConnectionResponse/>");
    EXPECT_FALSE(lineEventCalled);
}

TEST_F(ProviderTest, LineDeviceStatusAlwaysFails) {
    LogIn();
    GuardedBuffer status(256);
    GuardedBuffer untouched(256);
    EXPECT_EQ(Recorded([&] {
                  EXPECT_EQ(provider.lineGetLineDevStatus(nullptr, status.As<LINEDEVSTATUS>()),
                            static_cast<LONG>(0x8000002B));
              }),
              (LogTexts{"TSPI_lineGetLineDevStatus"}));
    EXPECT_EQ(status.DifferencesFrom(untouched), "");
}

TEST_F(ProviderTest, AddressStatusShowsOneUserAndNoCalls) {
    LogIn();
    MakeCall(L"123");
    GuardedBuffer status(kLineAddressStatusBytes);
    GuardedBuffer expected(kLineAddressStatusBytes);
    expected.SetWord(offsetof(LINEADDRESSSTATUS, dwTotalSize), kLineAddressStatusBytes);
    expected.SetWord(offsetof(LINEADDRESSSTATUS, dwNeededSize), kLineAddressStatusBytes);
    expected.SetWord(offsetof(LINEADDRESSSTATUS, dwNumInUse), 1);
    expected.SetWord(offsetof(LINEADDRESSSTATUS, dwNumActiveCalls), 0);
    expected.SetWord(offsetof(LINEADDRESSSTATUS, dwNumOnHoldCalls), 0);
    expected.SetWord(offsetof(LINEADDRESSSTATUS, dwNumOnHoldPendCalls), 0);
    EXPECT_EQ(
        Recorded([&] { EXPECT_EQ(provider.lineGetAddressStatus(nullptr, 0, status.As<LINEADDRESSSTATUS>()), 0); }),
        (LogTexts{"TSPI_lineGetAddressStatus"}));
    EXPECT_EQ(status.DifferencesFrom(expected), "");
}

TEST_F(ProviderTest, TheMisspelledAddressStatusTouchesNothing) {
    LogIn();
    GuardedBuffer status(kLineAddressStatusBytes);
    GuardedBuffer untouched(kLineAddressStatusBytes);
    EXPECT_EQ(Recorded([&] { EXPECT_EQ(provider.lineGetAdressStatus(nullptr, 0, status.As<LINEADDRESSSTATUS>()), 0); }),
              (LogTexts{"TSPI_lineGetAdressStatus"}));
    EXPECT_EQ(status.DifferencesFrom(untouched), "");
}

TEST_F(ProviderTest, TheLineHasOneAddressAndNoExtensions) {
    LogIn();
    GuardedBuffer count(sizeof(DWORD));
    EXPECT_EQ(Recorded([&] { EXPECT_EQ(provider.lineGetNumAddressIDs(nullptr, count.As<DWORD>()), 0); }),
              (LogTexts{"TSPI_lineGetNumAddressIDs"}));
    EXPECT_EQ(count.Word(0), 1U);

    GuardedBuffer extension(sizeof(LINEEXTENSIONID));
    GuardedBuffer expected(sizeof(LINEEXTENSIONID));
    expected.Zero(0, sizeof(LINEEXTENSIONID));
    EXPECT_EQ(
        Recorded([&] { EXPECT_EQ(provider.lineGetExtensionID(99, kTspiVersion, extension.As<LINEEXTENSIONID>()), 0); }),
        (LogTexts{"TSPI_lineGetExtensionID"}));
    EXPECT_EQ(extension.DifferencesFrom(expected), "");
}

}  // namespace
}  // namespace velmora
