#include <windows.h>

#include <tspi.h>

#include "config/trace_log.h"

using namespace velmora;

extern "C" {

LONG TSPIAPI TUISPI_lineConfigDialog(TUISPIDLLCALLBACK /*callback*/, DWORD /*deviceId*/, HWND /*owner*/,
                                     LPCWSTR /*deviceClass*/) {
    return 0;
}

LONG TSPIAPI TUISPI_providerConfig(TUISPIDLLCALLBACK /*callback*/, HWND /*owner*/, DWORD /*permanentProviderId*/) {
    WriteLog(5, "TUISPI_providerConfig");
    return 0;
}

}  // extern "C"
