#include "provider/provider.h"

#include <algorithm>

#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "csta/session.h"
#include "provider/calls.h"

// The life of the provider: load, version negotiation, start, stop. Every entry point is called as Microsoft's pages on
// the Telephony Service Provider Interface say.

namespace velmora {

ProviderState providerState;

}  // namespace velmora

using namespace velmora;

extern "C" {

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* reserved);  // the loader's; no header declares it

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* /*reserved*/) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    providerState.instance = instance;
    // No settings are loaded yet, so this record is dropped, but the log's time starts here.
    WriteLog(0, "Loaded TAPI DLL");
    return TRUE;
}

LONG TSPIAPI TSPI_providerInit(DWORD /*version*/, DWORD permanentProviderId, DWORD lineDeviceIdBase,
                               DWORD phoneDeviceIdBase, DWORD_PTR /*lines*/, DWORD_PTR /*phones*/,
                               ASYNC_COMPLETION completion, LPDWORD /*options*/) {
    if (providerState.initialised) return 0;
    providerState.permanentProviderId = permanentProviderId;
    providerState.lineDeviceIdBase = lineDeviceIdBase;
    providerState.phoneDeviceIdBase = phoneDeviceIdBase;
    providerState.completionCallback = completion;
    providerState.initialised = true;
    WriteLog(1, "Provider Init");
    StartSession(BindPlacedCall);
    return 0;
}

LONG TSPIAPI TSPI_providerShutdown(DWORD /*version*/, DWORD /*permanentProviderId*/) {
    WriteLog(5, "TSPI_providerShutdown");
    if (!providerState.initialised) return 0;
    StopSession();
    providerState.initialised = false;
    return 0;
}

LONG TSPIAPI TSPI_providerEnumDevices(DWORD /*permanentProviderId*/, LPDWORD lines, LPDWORD phones,
                                      HPROVIDER /*provider*/, LINEEVENT /*lineCreate*/, PHONEEVENT /*phoneCreate*/) {
    WriteLog(5, "TSPI_providerEnumDevices");
    *lines = 1;
    *phones = 1;
    return 0;
}

// Takes any range that begins at 2.2 or below, and settles on an older version if the range ends there. TAPI also asks
// before TSPI_providerInit, with INITIALIZE_NEGOTIATION as the device.
LONG TSPIAPI TSPI_lineNegotiateTSPIVersion(DWORD /*deviceId*/, DWORD low, DWORD high, LPDWORD version) {
    if (low > kTspiVersion) return static_cast<LONG>(LINEERR_INCOMPATIBLEAPIVERSION);
    *version = std::min(high, kTspiVersion);
    return 0;
}

// Unlike the line: looks at the end of the range alone, and settles on nothing but 2.2. Keep.
LONG TSPIAPI TSPI_phoneNegotiateTSPIVersion(DWORD /*deviceId*/, DWORD low, DWORD high, LPDWORD version) {
    WriteLog(5, "TSPI_phoneNegotiateTSPIVersion dwLowVersion=" + DecimalText(low) +
                    " dwHighVersion=" + DecimalText(high) + " myVersion=" + DecimalText(kTspiVersion));
    if (high < kTspiVersion) return static_cast<LONG>(PHONEERR_INCOMPATIBLEAPIVERSION);
    *version = kTspiVersion;
    return 0;
}

// The provider is its own user-interface DLL.
LONG TSPIAPI TSPI_providerUIIdentify(LPWSTR dllName) {
    WriteLog(5, "TSPI_providerUIIdentify");
    if (providerState.instance == nullptr) {
        WriteLog(0, "TSPI_providerUIIdentify: Instance not available");
        return 1;  // not one of TAPI's codes. Keep
    }
    GetModuleFileNameW(providerState.instance, dllName, MAX_PATH);
    return 0;
}

}  // extern "C"
