#include "provider/line.h"

#include "config/trace_log.h"

// Opening the line, and its fixed answers.

namespace velmora {

LineDevice lineDevice;

}  // namespace velmora

using namespace velmora;

extern "C" {

LONG TSPIAPI TSPI_lineOpen(DWORD /*deviceId*/, HTAPILINE tapiLine, LPHDRVLINE driverLine, DWORD /*version*/,
                           LINEEVENT eventCallback) {
    WriteLog(5, "TSPI_lineOpen");
    lineDevice = {eventCallback, tapiLine};
    *driverLine = reinterpret_cast<HDRVLINE>(&lineDevice);
    return 0;
}

LONG TSPIAPI TSPI_lineGetAddressStatus(HDRVLINE /*line*/, DWORD /*addressId*/, LPLINEADDRESSSTATUS status) {
    constexpr DWORD kStatusBytes = 64;
    WriteLog(5, "TSPI_lineGetAddressStatus");
    status->dwTotalSize = kStatusBytes;  // whatever the caller's buffer holds; dwUsedSize stays the caller's. Keep
    status->dwNeededSize = kStatusBytes;
    status->dwNumInUse = 1;
    status->dwNumActiveCalls = 0;
    status->dwNumOnHoldCalls = 0;
    status->dwNumOnHoldPendCalls = 0;
    return 0;
}

LONG TSPIAPI TSPI_lineGetNumAddressIDs(HDRVLINE /*line*/, LPDWORD addresses) {
    WriteLog(5, "TSPI_lineGetNumAddressIDs");
    *addresses = 1;
    return 0;
}

LONG TSPIAPI TSPI_lineGetExtensionID(DWORD /*deviceId*/, DWORD /*version*/, LPLINEEXTENSIONID extension) {
    WriteLog(5, "TSPI_lineGetExtensionID");
    *extension = {};  // no extension of TAPI is offered
    return 0;
}

}  // extern "C"
