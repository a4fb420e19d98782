#pragma once

#include <windows.h>

#include <tspi.h>

namespace velmora {

// What TAPI handed over when it loaded and initialised the provider, one per process. Written by the module entry,
// TSPI_providerInit and TSPI_providerShutdown, which TAPI serialises. No lock.
struct ProviderState {
    HINSTANCE instance = nullptr;                   // of this DLL; null until it is loaded
    bool initialised = false;                       // between TSPI_providerInit and TSPI_providerShutdown
    DWORD permanentProviderId = 0;                  // TAPI's ID of this provider
    DWORD lineDeviceIdBase = 0;                     // TAPI's ID of our line
    DWORD phoneDeviceIdBase = 0;                    // TAPI's ID of our phone
    ASYNC_COMPLETION completionCallback = nullptr;  // never called: no request is ever completed. Keep
};
extern ProviderState providerState;

inline constexpr DWORD kTspiVersion = 0x00020002;  // TAPI 2.2

}  // namespace velmora
