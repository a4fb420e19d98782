#include <set>

#include "tests/provider/provider_test.h"
#include "tests/support/csta_answers.h"
#include "tests/support/guarded_buffer.h"

namespace velmora {
namespace {

static_assert(offsetof(LINECALLSTATUS, tStateEntryTime) + sizeof(SYSTEMTIME) == kLineCallStatusBytes);
static_assert(offsetof(LINECALLINFO, dwTrunk) == 104);
static_assert(offsetof(LINECALLINFO, dwConnectedIDNameOffset) == 164);

constexpr LONG kCallUnavailable = static_cast<LONG>(0x80000005);
constexpr LONG kInvalidCallHandle = static_cast<LONG>(0x80000018);
constexpr size_t kCallSlots = 10;

class CallsTest : public ProviderTest {
protected:
    void ExpectCloseFails(HDRVCALL call) {
        EXPECT_EQ(Recorded([&] { EXPECT_EQ(provider.lineCloseCall(call), kInvalidCallHandle); }),
                  (LogTexts{"TSPI_lineCloseCall"}));
    }
};

TEST_F(CallsTest, DialOnlyDigitsStarsAndHashes) {
    struct Dialling {
        std::wstring address;
        const char* number;
    };
    const Dialling diallings[kCallSlots] = {
        {L"+49 (30) 1234", "49301234"},
        {L"*21#", "*21#"},
        {L"T123", "123"},
        {L"", ""},
        {L"0123456789*#", "0123456789*#"},
        {L"abc.,;:/!?@$ +-()", ""},
        {L"1\t2-3.4w5,6;7", "1234567"},
        {L"123^Bob", "123"},
        // Digits of other scripts, and letters whose low byte is that of a digit.
        {L"\uFF11\u0661\u0131\u0232\u3033\u012A\u0223"
         L"5",
         "5"},
        {L"00\u00B2\u00B9\u00BD"
         L"7",
         "007"},
    };
    LogIn();
    for (const Dialling& dialling : diallings) {
        SCOPED_TRACE(dialling.number);
        const size_t before = pbx.Frames().size();
        const LogTexts texts = Recorded([&] { MakeCall(dialling.address); });
        EXPECT_EQ(ElementText(pbx.WaitForFrame(before).xml, "calledDirectoryNumber"), dialling.number);
        ASSERT_FALSE(texts.empty());
        EXPECT_EQ(texts.front(), std::string("TSPI_lineMakeCall to ") + dialling.number + " CountryCode = 0");
    }
}

TEST_F(CallsTest, RecordTheCountryCodeWithoutDiallingItAndReturnTheRequestId) {
    LogIn();
    const LogTexts texts = Recorded([&] {
        MakeCall(L"123", 49);
        MakeCall(L"123", 0xFFFFFFFF);
    });
    ASSERT_EQ(texts.size(), 4U);
    EXPECT_EQ(texts[0], "TSPI_lineMakeCall to 123 CountryCode = 49");
    EXPECT_EQ(texts[2], "TSPI_lineMakeCall to 123 CountryCode = 4294967295");
    for (const size_t index : {size_t{2}, size_t{3}}) {
        EXPECT_EQ(ElementText(pbx.WaitForFrame(index).xml, "calledDirectoryNumber"), "123");
    }

    for (const DRV_REQUESTID request : {1U, 0x10000U, 0x7FFFFFFFU}) {
        HDRVCALL call = nullptr;
        EXPECT_EQ(provider.lineMakeCall(request, nullptr, nullptr, &call, L"1", 0, nullptr),
                  static_cast<LONG>(request));
        EXPECT_NE(call, nullptr);
    }
}

TEST_F(CallsTest, ComeFromABareAtSignWithoutUsernameAndDomain) {
    registry.RemoveValue("username");
    registry.RemoveValue("domain");
    LogIn();
    const HDRVCALL call = MakeCall(L"123");
    EXPECT_EQ(ElementText(pbx.WaitForFrame(1).xml, "deviceObject"), "@");
    EXPECT_EQ(ElementText(pbx.WaitForFrame(2).xml, "callingDevice"), "@");
    EXPECT_EQ(ElementText(CloseCall(call), "deviceID"), "@");
}

TEST_F(CallsTest, AskForAutoOriginationOnlyWhenItIsOn) {
    LogIn();
    MakeCall(L"123");
    EXPECT_EQ(pbx.WaitForFrame(2).xml.find("autoOriginate"), std::string::npos);
    Stop();
    registry.Set("autooriginate", "1");
    LogIn();
    MakeCall(L"456");
    WaitForMakeCall("456");
    EXPECT_EQ(ElementText(pbx.Frames().back().xml, "autoOriginate"), "doNotPrompt");
}

TEST_F(CallsTest, AreTenInTheLifeOfAProcess) {
    LogIn();
    std::set<HDRVCALL> calls;
    for (size_t count = 0; count < kCallSlots; ++count) {
        const HDRVCALL call = MakeCall(L"1");
        calls.insert(call);
        CloseCall(call);
    }
    EXPECT_EQ(calls.size(), kCallSlots);
    Stop();
    LogIn();

    GuardedBuffer handle(sizeof(HDRVCALL));
    const GuardedBuffer untouched(sizeof(HDRVCALL));
    const size_t framesBefore = pbx.Frames().size();
    for (int count = 0; count < 3; ++count) {
        EXPECT_EQ(Recorded([&] {
                      EXPECT_EQ(provider.lineMakeCall(kRequestId, nullptr, nullptr, handle.As<HDRVCALL>(), L"11", 49,
                                                      nullptr),
                                kCallUnavailable);
                  }),
                  (LogTexts{"TSPI_lineMakeCall: No free line available"}));
    }
    EXPECT_EQ(log.Records().back().level, 5);
    EXPECT_EQ(handle.DifferencesFrom(untouched), "");
    WaitUntilDispatched();
    EXPECT_EQ(pbx.Frames().size(), framesBefore + 1) << "more than the MonitorStart just asked for";
}

TEST_F(CallsTest, AreClosedOnlyOnce) {
    LogIn();
    const HDRVCALL call = MakeCall(L"123");
    std::string xml;
    const LogTexts texts = Recorded([&] { xml = CloseCall(call); });
    EXPECT_EQ(texts, (LogTexts{"TSPI_lineCloseCall", "CSTA Tx: " + xml}));
    ExpectCloseFails(call);
    ExpectCloseFails(call);
    WaitUntilDispatched();
    EXPECT_EQ(pbx.Frames().size(), 5U) << "login, monitor, call, clear, and the monitor just asked for";
}

TEST_F(CallsTest, AreNotEndedByDropping) {
    LogIn();
    const HDRVCALL call = MakeCall(L"123");
    EXPECT_EQ(Recorded([&] { EXPECT_EQ(provider.lineDrop(kRequestId, call, nullptr, 0), 0); }),
              (LogTexts{"TSPI_lineDrop"}));
    CloseCall(call);
    EXPECT_NE(pbx.WaitForFrame(3).xml.find("<ClearConnection "), std::string::npos) << "something came before";
}

TEST_F(CallsTest, AreAllBoundByAnAnswerThatMatchesAll) {
    LogIn();
    // A slot that was never used has invoke ID 0, and an answer binds every slot with its invoke ID. Placing a call
    // then sets the device anew and leaves the PBX's call ID.
    SendAndWait(0, CallMade("C-0", "D-0"));
    const HDRVCALL calls[] = {MakeCall(L"1"), MakeCall(L"2")};
    for (const HDRVCALL call : calls) {
        const std::string xml = CloseCall(call);
        EXPECT_EQ(ElementText(xml, "callID"), "C-0");
        EXPECT_EQ(ElementText(xml, "deviceID"), kDevice);
    }
}

TEST_F(CallsTest, AreNotBoundByAnAnswerToAnotherRequest) {
    LogIn();
    const HDRVCALL first = MakeCall(L"1");
    const HDRVCALL second = MakeCall(L"2");
    const uint32_t secondId = WaitForMakeCall("2");
    SendAndWait(secondId, CallMade("C-2", "D-2"));
    SendAndWait(secondId + 1, CallMade("C-3", "D-3"));
    SendAndWait(0xFFFFFFFF, CallMade("C-4", "D-4"));
    SendAndWait(0, CallMade("C-0", "D-0"));
    EXPECT_EQ(ElementText(CloseCall(second), "callID"), "C-2");
    EXPECT_NE(CloseCall(first).find("<callID></callID>"), std::string::npos);
}

TEST_F(CallsTest, TakeTheLatestOfTwoAnswers) {
    LogIn();
    const HDRVCALL call = MakeCall(L"1");
    const uint32_t invokeId = WaitForMakeCall("1");
    SendAndWait(invokeId, CallMade("C-1", "D-1"));
    SendAndWait(invokeId, CallMade("C-2", "D-2"));
    const std::string xml = CloseCall(call);
    EXPECT_EQ(ElementText(xml, "callID"), "C-2");
    EXPECT_EQ(ElementText(xml, "deviceID"), "D-2");
}

TEST_F(CallsTest, StayOpenAcrossAShutdown) {
    LogIn();
    const HDRVCALL call = MakeCall(L"1");
    SendAndWait(WaitForMakeCall("1"), CallMade("C-1", "D-1"));
    Stop();
    LogIn();
    EXPECT_EQ(ElementText(CloseCall(call), "callID"), "C-1");
}

TEST_F(CallsTest, HaveAFixedStatus) {
    LogIn();
    const HDRVCALL call = MakeCall(L"123");
    for (const HDRVCALL handle : {call, HDRVCALL{}}) {
        GuardedBuffer status(kLineCallStatusBytes);
        GuardedBuffer expected(kLineCallStatusBytes);
        expected.SetWord(offsetof(LINECALLSTATUS, dwTotalSize), kLineCallStatusBytes);
        expected.SetWord(offsetof(LINECALLSTATUS, dwNeededSize), kLineCallStatusBytes);
        expected.SetWord(offsetof(LINECALLSTATUS, dwUsedSize), 0);
        expected.SetWord(offsetof(LINECALLSTATUS, dwCallStateMode), 0);
        expected.SetWord(offsetof(LINECALLSTATUS, dwCallPrivilege), 0xD7);
        expected.SetWord(offsetof(LINECALLSTATUS, dwCallFeatures), 1);
        EXPECT_EQ(Recorded([&] { EXPECT_EQ(provider.lineGetCallStatus(handle, status.As<LINECALLSTATUS>()), 0); }),
                  (LogTexts{"TSPI_lineGetCallStatus"}));
        EXPECT_EQ(status.DifferencesFrom(expected), "");
    }
}

TEST_F(CallsTest, HaveFixedInformation) {
    LogIn();
    const HDRVCALL call = MakeCall(L"123");
    for (const HDRVCALL handle : {call, HDRVCALL{}}) {
        GuardedBuffer info(kLineCallInfoBytes);
        GuardedBuffer expected(kLineCallInfoBytes);
        expected.SetWord(offsetof(LINECALLINFO, dwTotalSize), 0);
        expected.SetWord(offsetof(LINECALLINFO, dwNeededSize), kLineCallInfoBytes);
        expected.SetWord(offsetof(LINECALLINFO, dwUsedSize), kLineCallInfoBytes);
        expected.SetWord(offsetof(LINECALLINFO, dwLineDeviceID), 0);
        expected.SetWord(offsetof(LINECALLINFO, dwAddressID), 0);
        expected.SetWord(offsetof(LINECALLINFO, dwBearerMode), 2);
        expected.SetWord(offsetof(LINECALLINFO, dwOrigin), 0x80);
        expected.SetWord(offsetof(LINECALLINFO, dwReason), 1);
        expected.SetWord(offsetof(LINECALLINFO, dwCompletionID), 0);
        expected.SetWord(offsetof(LINECALLINFO, dwCountryCode), 0);
        expected.SetWord(offsetof(LINECALLINFO, dwTrunk), 0xFFFFFFFF);
        const size_t firstZero = offsetof(LINECALLINFO, dwCallerIDFlags);
        expected.Zero(firstZero, offsetof(LINECALLINFO, dwRedirectionIDFlags) - firstZero);
        EXPECT_EQ(Recorded([&] { EXPECT_EQ(provider.lineGetCallInfo(handle, info.As<LINECALLINFO>()), 0); }),
                  (LogTexts{"TSPI_lineGetCallInfo"}));
        EXPECT_EQ(info.DifferencesFrom(expected), "");
    }
}

TEST_F(CallsTest, HaveNoAddressId) {
    LogIn();
    const HDRVCALL call = MakeCall(L"123");
    GuardedBuffer address(sizeof(DWORD));
    EXPECT_EQ(Recorded([&] { EXPECT_EQ(provider.lineGetCallAddressID(call, address.As<DWORD>()), 0); }),
              (LogTexts{"TSPI_lineGetCallAddressID"}));
    EXPECT_EQ(address.Word(0), 0xCCCCCCCC);
}

}  // namespace
}  // namespace velmora
