#include <windows.h>

#include <tapi.h>

#include "config/trace_log.h"

// The entry points that exist only so that the export table is complete: each logs its name and gives a fixed code.
// None looks at its arguments, so a request that TAPI expects to be asynchronous is never completed.
//
// <tspi.h> is left out on purpose: on x64 the caller removes the arguments, so one body without any serves every
// signature.

namespace {

// Not inlined: a hundred copies would make up a twentieth of the DLL.
[[gnu::noinline]] LONG TraceStub(const char* name, DWORD code) {
    velmora::WriteLog(5, name);
    return static_cast<LONG>(code);
}

}  // namespace

#define STUB(name, code)               \
    extern "C" LONG WINAPI name();     \
    LONG WINAPI name() {               \
        return TraceStub(#name, code); \
    }

// clang-format off
STUB(TSPI_lineAccept, LINEERR_INVALCALLHANDLE)
STUB(TSPI_lineAnswer, LINEERR_INVALCALLHANDLE)
STUB(TSPI_lineDial, LINEERR_INVALCALLHANDLE)
STUB(TSPI_lineGetLineDevStatus, LINEERR_INVALLINEHANDLE)

STUB(TSPI_lineAddToConference, 0)
STUB(TSPI_lineBlindTransfer, 0)
STUB(TSPI_lineClose, 0)
STUB(TSPI_lineCompleteCall, 0)
STUB(TSPI_lineCompleteTransfer, 0)
STUB(TSPI_lineConditionalMediaDetection, 0)
STUB(TSPI_lineDevSpecific, 0)
STUB(TSPI_lineDevSpecificFeature, 0)
STUB(TSPI_lineDrop, 0)
STUB(TSPI_lineDropNoOwner, 0)
STUB(TSPI_lineDropOnClose, 0)
STUB(TSPI_lineForward, 0)
STUB(TSPI_lineGatherDigits, 0)
STUB(TSPI_lineGenerateDigits, 0)
STUB(TSPI_lineGenerateTone, 0)
STUB(TSPI_lineGetAddressID, 0)
STUB(TSPI_lineGetAdressStatus, 0)
STUB(TSPI_lineGetCallAddressID, 0)
STUB(TSPI_lineGetDevConfig, 0)
STUB(TSPI_lineGetIcon, 0)
STUB(TSPI_lineGetID, 0)
STUB(TSPI_lineHold, 0)
STUB(TSPI_lineMonitorDigits, 0)
STUB(TSPI_lineMonitorMedia, 0)
STUB(TSPI_lineMonitorTones, 0)
STUB(TSPI_lineNegotiateExtVersion, 0)
STUB(TSPI_linePark, 0)
STUB(TSPI_linePickup, 0)
STUB(TSPI_linePrepareAddToConference, 0)
STUB(TSPI_lineRedirect, 0)
STUB(TSPI_lineReleaseUserUserInfo, 0)
STUB(TSPI_lineRemoveFromConference, 0)
STUB(TSPI_lineSecureCall, 0)
STUB(TSPI_lineSendUserUserInfo, 0)
STUB(TSPI_lineSetAppSpecific, 0)
STUB(TSPI_lineSetCallData, 0)
STUB(TSPI_lineSetCallParams, 0)
STUB(TSPI_lineSetCallQualityOfService, 0)
STUB(TSPI_lineSetCallTreatment, 0)
STUB(TSPI_lineSetCurrentLocation, 0)
STUB(TSPI_lineSetDefaultMediaDetection, 0)
STUB(TSPI_lineSetDevConfig, 0)
STUB(TSPI_lineSetLineDevStatus, 0)
STUB(TSPI_lineSetMediaControl, 0)
STUB(TSPI_lineSetMediaMode, 0)
STUB(TSPI_lineSetTerminal, 0)
STUB(TSPI_lineSetupConference, 0)
STUB(TSPI_lineSetupTransfer, 0)
STUB(TSPI_lineSwapHold, 0)
STUB(TSPI_lineUncompleteCall, 0)
STUB(TSPI_lineUnhold, 0)
STUB(TSPI_lineUnpark, 0)

STUB(TSPI_phoneClose, 0)
STUB(TSPI_phoneDevSpecific, 0)
STUB(TSPI_phoneGetButtonInfo, 0)
STUB(TSPI_phoneGetData, 0)
STUB(TSPI_phoneGetDevCaps, 0)
STUB(TSPI_phoneGetDisplay, 0)
STUB(TSPI_phoneGetExtensionID, 0)
STUB(TSPI_phoneGetGain, 0)
STUB(TSPI_phoneGetHookSwitch, 0)
STUB(TSPI_phoneGetIcon, 0)
STUB(TSPI_phoneGetID, 0)
STUB(TSPI_phoneGetLamp, 0)
STUB(TSPI_phoneGetRing, 0)
STUB(TSPI_phoneGetStatus, 0)
STUB(TSPI_phoneGetVolume, 0)
STUB(TSPI_phoneNegotiateExtVersion, 0)
STUB(TSPI_phoneOpen, 0)
STUB(TSPI_phoneSelectExtVersion, 0)
STUB(TSPI_phoneSetButtonInfo, 0)
STUB(TSPI_phoneSetData, 0)
STUB(TSPI_phoneSetDisplay, 0)
STUB(TSPI_phoneSetGain, 0)
STUB(TSPI_phoneSetHookSwitch, 0)
STUB(TSPI_phoneSetLamp, 0)
STUB(TSPI_phoneSetRing, 0)
STUB(TSPI_phoneSetStatusMessages, 0)
STUB(TSPI_phoneSetVolume, 0)

STUB(TSPI_providerConfig, 0)
STUB(TSPI_providerCreateLineDevice, 0)
STUB(TSPI_providerCreatePhoneDevice, 0)
STUB(TSPI_providerFreeDialogInstance, 0)
STUB(TSPI_providerGenericDialogData, 0)
STUB(TSPI_providerInstall, 0)
STUB(TSPI_providerRemove, 0)

STUB(TUISPI_lineConfigDialogEdit, 0)
STUB(TUISPI_phoneConfigDialog, 0)
STUB(TUISPI_providerGenericDialog, 0)
STUB(TUISPI_providerGenericDialogData, 0)
STUB(TUISPI_providerInstall, 0)
STUB(TUISPI_providerRemove, 0)
STUB(TUISPI_providerUIIdentify, 0)
// clang-format on

#undef STUB
