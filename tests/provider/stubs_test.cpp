#include <bit>
#include <iterator>

#include "tests/provider/provider_test.h"

namespace velmora {
namespace {

constexpr LONG kInvalidCallHandle = static_cast<LONG>(0x80000018);
constexpr LONG kInvalidLineHandle = static_cast<LONG>(0x8000002B);

// An entry point that does nothing but record its name and return a code.
struct Stub {
    const char* name;
    LONG code;
};

const Stub kStubs[] = {
    {"TSPI_lineAccept", kInvalidCallHandle},
    {"TSPI_lineAnswer", kInvalidCallHandle},
    {"TSPI_lineDial", kInvalidCallHandle},
    {"TSPI_lineGetLineDevStatus", kInvalidLineHandle},
    {"TSPI_lineClose", 0},
    {"TSPI_lineDrop", 0},
    {"TSPI_lineGetAdressStatus", 0},
    {"TSPI_lineGetCallAddressID", 0},
    {"TUISPI_providerInstall", 0},
    {"TSPI_providerInstall", 0},
    {"TUISPI_providerRemove", 0},
    {"TSPI_providerRemove", 0},
    {"TUISPI_providerUIIdentify", 0},
    {"TSPI_providerGenericDialogData", 0},
    {"TSPI_lineAddToConference", 0},
    {"TSPI_lineBlindTransfer", 0},
    {"TSPI_lineCompleteCall", 0},
    {"TSPI_lineCompleteTransfer", 0},
    {"TSPI_lineConditionalMediaDetection", 0},
    {"TSPI_lineDevSpecific", 0},
    {"TSPI_lineDevSpecificFeature", 0},
    {"TSPI_lineDropOnClose", 0},
    {"TSPI_lineDropNoOwner", 0},
    {"TSPI_lineForward", 0},
    {"TSPI_lineGatherDigits", 0},
    {"TSPI_lineGenerateDigits", 0},
    {"TSPI_lineGenerateTone", 0},
    {"TSPI_lineGetAddressID", 0},
    {"TSPI_lineGetDevConfig", 0},
    {"TSPI_lineGetIcon", 0},
    {"TSPI_lineGetID", 0},
    {"TSPI_lineHold", 0},
    {"TSPI_lineMonitorDigits", 0},
    {"TSPI_lineMonitorMedia", 0},
    {"TSPI_lineMonitorTones", 0},
    {"TSPI_lineNegotiateExtVersion", 0},
    {"TSPI_linePark", 0},
    {"TSPI_linePickup", 0},
    {"TSPI_linePrepareAddToConference", 0},
    {"TSPI_lineRedirect", 0},
    {"TSPI_lineReleaseUserUserInfo", 0},
    {"TSPI_lineRemoveFromConference", 0},
    {"TSPI_lineSecureCall", 0},
    {"TSPI_lineSendUserUserInfo", 0},
    {"TSPI_lineSetAppSpecific", 0},
    {"TSPI_lineSetCallData", 0},
    {"TSPI_lineSetCallParams", 0},
    {"TSPI_lineSetCallQualityOfService", 0},
    {"TSPI_lineSetCallTreatment", 0},
    {"TSPI_lineSetCurrentLocation", 0},
    {"TSPI_lineSetDefaultMediaDetection", 0},
    {"TSPI_lineSetDevConfig", 0},
    {"TSPI_lineSetLineDevStatus", 0},
    {"TSPI_lineSetMediaControl", 0},
    {"TSPI_lineSetMediaMode", 0},
    {"TSPI_lineSetTerminal", 0},
    {"TSPI_lineSetupConference", 0},
    {"TSPI_lineSetupTransfer", 0},
    {"TSPI_lineSwapHold", 0},
    {"TSPI_lineUncompleteCall", 0},
    {"TSPI_lineUnhold", 0},
    {"TSPI_lineUnpark", 0},
    {"TSPI_phoneClose", 0},
    {"TSPI_phoneDevSpecific", 0},
    {"TSPI_phoneGetButtonInfo", 0},
    {"TSPI_phoneGetData", 0},
    {"TSPI_phoneGetDevCaps", 0},
    {"TSPI_phoneGetDisplay", 0},
    {"TSPI_phoneGetExtensionID", 0},
    {"TSPI_phoneGetGain", 0},
    {"TSPI_phoneGetHookSwitch", 0},
    {"TSPI_phoneGetIcon", 0},
    {"TSPI_phoneGetID", 0},
    {"TSPI_phoneGetLamp", 0},
    {"TSPI_phoneGetRing", 0},
    {"TSPI_phoneGetStatus", 0},
    {"TSPI_phoneGetVolume", 0},
    {"TSPI_phoneNegotiateExtVersion", 0},
    {"TSPI_phoneOpen", 0},
    {"TSPI_phoneSelectExtVersion", 0},
    {"TSPI_phoneSetButtonInfo", 0},
    {"TSPI_phoneSetData", 0},
    {"TSPI_phoneSetDisplay", 0},
    {"TSPI_phoneSetGain", 0},
    {"TSPI_phoneSetHookSwitch", 0},
    {"TSPI_phoneSetLamp", 0},
    {"TSPI_phoneSetRing", 0},
    {"TSPI_phoneSetStatusMessages", 0},
    {"TSPI_phoneSetVolume", 0},
    {"TSPI_providerConfig", 0},
    {"TSPI_providerCreateLineDevice", 0},
    {"TSPI_providerCreatePhoneDevice", 0},
    {"TSPI_providerFreeDialogInstance", 0},
    {"TUISPI_lineConfigDialogEdit", 0},
    {"TUISPI_phoneConfigDialog", 0},
    {"TUISPI_providerGenericDialog", 0},
    {"TUISPI_providerGenericDialogData", 0},
};

// No entry point has more than twelve arguments, and the caller clears the stack in this calling convention.
using AnyEntryPoint = LONG(WINAPI*)(uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t,
                                    uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t);

// Calls an export with arguments that it cannot read through: none of these addresses exists.
LONG CallWithUselessArguments(const ProviderHost& provider, const char* name) {
    const auto call = std::bit_cast<AnyEntryPoint>(provider.Export(name));
    constexpr uintptr_t kNowhere = 0xDEAD0000DEAD0000;
    return call(kNowhere, kNowhere, kNowhere, kNowhere, kNowhere, kNowhere, kNowhere, kNowhere, kNowhere, kNowhere,
                kNowhere, kNowhere);
}

TEST_F(ProviderTest, EveryStubRecordsItsNameAndReturnsItsCode) {
    const auto callAll = [&] {
        for (const Stub& stub : kStubs) {
            EXPECT_EQ(CallWithUselessArguments(provider, stub.name), stub.code) << stub.name;
        }
    };
    callAll();
    LogIn();
    const size_t before = log.Records().size();
    callAll();
    const std::vector<LogRecord> records = log.Records();
    ASSERT_EQ(records.size(), before + std::size(kStubs));
    for (size_t index = 0; index < std::size(kStubs); ++index) {
        EXPECT_EQ(records[before + index].text, kStubs[index].name);
        EXPECT_EQ(records[before + index].level, 5);
    }

    // None of them sends anything.
    MakeCall(L"123");
    EXPECT_EQ(ElementText(pbx.WaitForFrame(2).xml, "calledDirectoryNumber"), "123");
}

TEST_F(ProviderTest, SelectExtVersionIsASecondNameOfSecureCall) {
    LogIn();
    EXPECT_EQ(Recorded([&] { EXPECT_EQ(CallWithUselessArguments(provider, "TSPI_lineSelectExtVersion"), 0); }),
              (LogTexts{"TSPI_lineSecureCall"}));
}

}  // namespace
}  // namespace velmora
