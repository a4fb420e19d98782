#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <string>

#include "tests/support/pe_image.h"
#include "tests/support/provider_host.h"

namespace velmora {
namespace {

// The whole export table: TAPI's entry points of version 2.2 for lines, phones, the provider and its user interface,
// with a misspelled twin of TSPI_lineGetAddressStatus.
const char* const kExports[] = {
    "TSPI_lineAccept",
    "TSPI_lineAddToConference",
    "TSPI_lineAnswer",
    "TSPI_lineBlindTransfer",
    "TSPI_lineClose",
    "TSPI_lineCloseCall",
    "TSPI_lineCompleteCall",
    "TSPI_lineCompleteTransfer",
    "TSPI_lineConditionalMediaDetection",
    "TSPI_lineDevSpecific",
    "TSPI_lineDevSpecificFeature",
    "TSPI_lineDial",
    "TSPI_lineDrop",
    "TSPI_lineDropNoOwner",
    "TSPI_lineDropOnClose",
    "TSPI_lineForward",
    "TSPI_lineGatherDigits",
    "TSPI_lineGenerateDigits",
    "TSPI_lineGenerateTone",
    "TSPI_lineGetAddressCaps",
    "TSPI_lineGetAddressID",
    "TSPI_lineGetAddressStatus",
    "TSPI_lineGetAdressStatus",
    "TSPI_lineGetCallAddressID",
    "TSPI_lineGetCallInfo",
    "TSPI_lineGetCallStatus",
    "TSPI_lineGetDevCaps",
    "TSPI_lineGetDevConfig",
    "TSPI_lineGetExtensionID",
    "TSPI_lineGetID",
    "TSPI_lineGetIcon",
    "TSPI_lineGetLineDevStatus",
    "TSPI_lineGetNumAddressIDs",
    "TSPI_lineHold",
    "TSPI_lineMakeCall",
    "TSPI_lineMonitorDigits",
    "TSPI_lineMonitorMedia",
    "TSPI_lineMonitorTones",
    "TSPI_lineNegotiateExtVersion",
    "TSPI_lineNegotiateTSPIVersion",
    "TSPI_lineOpen",
    "TSPI_linePark",
    "TSPI_linePickup",
    "TSPI_linePrepareAddToConference",
    "TSPI_lineRedirect",
    "TSPI_lineReleaseUserUserInfo",
    "TSPI_lineRemoveFromConference",
    "TSPI_lineSecureCall",
    "TSPI_lineSelectExtVersion",
    "TSPI_lineSendUserUserInfo",
    "TSPI_lineSetAppSpecific",
    "TSPI_lineSetCallData",
    "TSPI_lineSetCallParams",
    "TSPI_lineSetCallQualityOfService",
    "TSPI_lineSetCallTreatment",
    "TSPI_lineSetCurrentLocation",
    "TSPI_lineSetDefaultMediaDetection",
    "TSPI_lineSetDevConfig",
    "TSPI_lineSetLineDevStatus",
    "TSPI_lineSetMediaControl",
    "TSPI_lineSetMediaMode",
    "TSPI_lineSetStatusMessages",
    "TSPI_lineSetTerminal",
    "TSPI_lineSetupConference",
    "TSPI_lineSetupTransfer",
    "TSPI_lineSwapHold",
    "TSPI_lineUncompleteCall",
    "TSPI_lineUnhold",
    "TSPI_lineUnpark",
    "TSPI_phoneClose",
    "TSPI_phoneDevSpecific",
    "TSPI_phoneGetButtonInfo",
    "TSPI_phoneGetData",
    "TSPI_phoneGetDevCaps",
    "TSPI_phoneGetDisplay",
    "TSPI_phoneGetExtensionID",
    "TSPI_phoneGetGain",
    "TSPI_phoneGetHookSwitch",
    "TSPI_phoneGetID",
    "TSPI_phoneGetIcon",
    "TSPI_phoneGetLamp",
    "TSPI_phoneGetRing",
    "TSPI_phoneGetStatus",
    "TSPI_phoneGetVolume",
    "TSPI_phoneNegotiateExtVersion",
    "TSPI_phoneNegotiateTSPIVersion",
    "TSPI_phoneOpen",
    "TSPI_phoneSelectExtVersion",
    "TSPI_phoneSetButtonInfo",
    "TSPI_phoneSetData",
    "TSPI_phoneSetDisplay",
    "TSPI_phoneSetGain",
    "TSPI_phoneSetHookSwitch",
    "TSPI_phoneSetLamp",
    "TSPI_phoneSetRing",
    "TSPI_phoneSetStatusMessages",
    "TSPI_phoneSetVolume",
    "TSPI_providerConfig",
    "TSPI_providerCreateLineDevice",
    "TSPI_providerCreatePhoneDevice",
    "TSPI_providerEnumDevices",
    "TSPI_providerFreeDialogInstance",
    "TSPI_providerGenericDialogData",
    "TSPI_providerInit",
    "TSPI_providerInstall",
    "TSPI_providerRemove",
    "TSPI_providerShutdown",
    "TSPI_providerUIIdentify",
    "TUISPI_lineConfigDialog",
    "TUISPI_lineConfigDialogEdit",
    "TUISPI_phoneConfigDialog",
    "TUISPI_providerConfig",
    "TUISPI_providerGenericDialog",
    "TUISPI_providerGenericDialogData",
    "TUISPI_providerInstall",
    "TUISPI_providerRemove",
    "TUISPI_providerUIIdentify",
};

class Exports : public testing::Test {
protected:
    PeImage image{PathBesideProgram("velmora.tsp")};
};

TEST_F(Exports, AreThese117NamesAndNoOthers) {
    const std::set<std::string> expected(std::begin(kExports), std::end(kExports));
    ASSERT_EQ(expected.size(), 117U);
    std::set<std::string> names;
    for (const auto& [name, address] : image.Exports()) {
        names.insert(name);
        EXPECT_NE(address, 0U) << name;
    }
    EXPECT_EQ(names, expected);
    EXPECT_LE(image.ExportedAddresses(), 117U) << "something is exported without a name";
}

TEST_F(Exports, AreTheSameForSelectExtVersionAndSecureCall) {
    std::map<std::string, uint32_t> exports = image.Exports();
    EXPECT_EQ(exports["TSPI_lineSelectExtVersion"], exports["TSPI_lineSecureCall"]);
}

TEST_F(Exports, NeedNothingButTheSystemAndItsCRuntime) {
    const std::set<std::string> allowed = {"KERNEL32.DLL", "ADVAPI32.DLL", "USER32.DLL",
                                           "WS2_32.DLL",   "MSVCRT.DLL",   "UCRTBASE.DLL"};
    const std::vector<std::string> imports = image.Imports();
    EXPECT_TRUE(std::count(imports.begin(), imports.end(), "KERNEL32.DLL") == 1);
    for (const std::string& name : imports) {
        EXPECT_TRUE(allowed.contains(name) || name.starts_with("API-MS-WIN-CRT-")) << name;
    }
}

TEST_F(Exports, StandInA64BitLibrary) {
    EXPECT_TRUE(image.IsLibraryFor64Bit());
}

TEST_F(Exports, StandInALibraryWithoutDebugSymbols) {
    EXPECT_FALSE(image.HasDebugSymbols());
}

}  // namespace
}  // namespace velmora
