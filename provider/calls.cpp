#include "provider/calls.h"

#include <windows.h>

#include <tspi.h>

#include <string_view>

#include "config/settings.h"
#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "csta/connection.h"
#include "csta/requests.h"
#include "provider/call_table.h"
#include "provider/dialled_digits.h"

// Placing and closing calls, and the fixed answers about them. No state of a call is ever reported to TAPI.

namespace velmora {
namespace {

CallTable callTable;

HDRVCALL HandleOf(const CallRecord& call) {
    return reinterpret_cast<HDRVCALL>(&call);
}

CallRecord& CallOf(HDRVCALL handle) {
    return *reinterpret_cast<CallRecord*>(const_cast<HDRVCALL__*>(handle));
}

// TAPI's strings are UTF-16; an absent one is an empty one.
std::u16string_view Utf16(LPCWSTR text) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    return text == nullptr ? std::u16string_view() : reinterpret_cast<const char16_t*>(text);
}

}  // namespace

void BindPlacedCall(uint32_t invokeId, const ByteString& callId, const ByteString& deviceId) {
    callTable.BindCall(invokeId, callId, deviceId);
}

}  // namespace velmora

using namespace velmora;

extern "C" {

LONG TSPIAPI TSPI_lineMakeCall(DRV_REQUESTID requestId, HDRVLINE /*line*/, HTAPICALL tapiCall, LPHDRVCALL driverCall,
                               LPCWSTR address, DWORD countryCode, LPLINECALLPARAMS const /*params*/) {
    // Held until the record has its invoke ID: a PBX nearby can answer before MakeCall returns.
    const CriticalSectionGuard guard(connection.lock);
    CallRecord* call = callTable.Take();
    if (call == nullptr) {
        WriteLog(5, "TSPI_lineMakeCall: No free line available");
        return static_cast<LONG>(LINEERR_CALLUNAVAIL);
    }
    call->tapiCall = tapiCall;
    call->inUse = true;
    call->deviceId = settings.username + "@" + settings.domain;

    const ByteString number = DialledDigits(Utf16(address));
    WriteLog(5, "TSPI_lineMakeCall to " + number + " CountryCode = " + DecimalText(countryCode));
    call->invokeId = MakeCall(call->deviceId, number, settings.autooriginate ? "doNotPrompt" : "");
    *driverCall = HandleOf(*call);
    return static_cast<LONG>(requestId);
}

LONG TSPIAPI TSPI_lineCloseCall(HDRVCALL driverCall) {
    WriteLog(5, "TSPI_lineCloseCall");
    const CriticalSectionGuard guard(connection.lock);
    CallRecord& call = CallOf(driverCall);
    if (!call.inUse) return static_cast<LONG>(LINEERR_INVALCALLHANDLE);
    ClearConnection(call.callId, call.deviceId);
    call.inUse = false;
    return 0;
}

LONG TSPIAPI TSPI_lineGetCallStatus(HDRVCALL /*driverCall*/, LPLINECALLSTATUS status) {
    constexpr DWORD kStatusBytes = 56;
    WriteLog(5, "TSPI_lineGetCallStatus");
    status->dwTotalSize = kStatusBytes;
    status->dwNeededSize = kStatusBytes;
    status->dwUsedSize = 0;
    status->dwCallStateMode = 0;
    status->dwCallPrivilege = 0xD7;  // a mask of call features, in this place. Keep
    status->dwCallFeatures = 1;
    return 0;
}

LONG TSPIAPI TSPI_lineGetCallInfo(HDRVCALL /*driverCall*/, LPLINECALLINFO info) {
    // LINECALLINFO of TSPI 2.2; newer headers add fields behind it.
    constexpr DWORD kInfoBytes = 324;
    constexpr size_t kPartiesBegin = offsetof(LINECALLINFO, dwCallerIDFlags);
    constexpr size_t kPartiesEnd = offsetof(LINECALLINFO, dwConnectedIDNameOffset) + sizeof(DWORD);

    WriteLog(5, "TSPI_lineGetCallInfo");
    info->dwTotalSize = 0;  // and the origin is inbound, although the provider placed the call. Keep both
    info->dwNeededSize = kInfoBytes;
    info->dwUsedSize = kInfoBytes;
    info->dwLineDeviceID = 0;
    info->dwAddressID = 0;
    info->dwBearerMode = LINEBEARERMODE_SPEECH;
    info->dwOrigin = LINECALLORIGIN_INBOUND;
    info->dwReason = LINECALLREASON_DIRECT;
    info->dwCompletionID = 0;
    info->dwCountryCode = 0;
    info->dwTrunk = 0xFFFFFFFF;
    ZeroMemory(reinterpret_cast<BYTE*>(info) + kPartiesBegin, kPartiesEnd - kPartiesBegin);
    return 0;
}

}  // extern "C"
