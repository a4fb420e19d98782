#pragma once

#include <windows.h>
// TAPI's header is written for a windows.h that has not been cut down.
#include <objbase.h>
// and the interface between TAPI and a provider
#include <tapi.h>
#include <tspi.h>

#include <cstddef>
#include <string>

namespace velmora {

// The provider as TAPI has it: velmora.tsp from beside the test program, with its exports.

// Fixed parts of TAPI's structures as of version 2.2. The toolchain's headers are of a later version, in which some are
// longer: sizeof is of no use here.
inline constexpr size_t kLineDevCapsBytes = 268;
inline constexpr size_t kLineAddressCapsBytes = 228;
inline constexpr size_t kLineAddressStatusBytes = 64;
inline constexpr size_t kLineCallStatusBytes = 56;
inline constexpr size_t kLineCallInfoBytes = 324;

inline constexpr DWORD kTspiVersion = 0x00020002;

// The path of the file with this name beside the test program.
std::string PathBesideProgram(const std::string& name);

struct ProviderHost {
    // Loads the provider and looks the exports up. It stays loaded until Unload, or the process ends: its threads run
    // in it.
    ProviderHost();

    // Unloads it, when no thread runs in it any more. The next one loaded starts with its state as new.
    void Unload() const;

    // Any export; null, and a failed test, when it is missing.
    FARPROC Export(const char* name) const;

    HMODULE module;

    decltype(&TSPI_providerInit) providerInit;
    decltype(&TSPI_providerShutdown) providerShutdown;
    decltype(&TSPI_providerEnumDevices) providerEnumDevices;
    decltype(&TSPI_providerUIIdentify) providerUIIdentify;
    decltype(&TSPI_lineNegotiateTSPIVersion) lineNegotiateTSPIVersion;
    decltype(&TSPI_phoneNegotiateTSPIVersion) phoneNegotiateTSPIVersion;

    decltype(&TSPI_lineGetDevCaps) lineGetDevCaps;
    decltype(&TSPI_lineGetAddressCaps) lineGetAddressCaps;
    decltype(&TSPI_lineOpen) lineOpen;
    decltype(&TSPI_lineClose) lineClose;
    decltype(&TSPI_lineGetLineDevStatus) lineGetLineDevStatus;
    decltype(&TSPI_lineGetAddressStatus) lineGetAddressStatus;
    decltype(&TSPI_lineGetAddressStatus) lineGetAdressStatus;
    decltype(&TSPI_lineGetNumAddressIDs) lineGetNumAddressIDs;
    decltype(&TSPI_lineGetExtensionID) lineGetExtensionID;
    decltype(&TSPI_lineSetStatusMessages) lineSetStatusMessages;

    decltype(&TSPI_lineMakeCall) lineMakeCall;
    decltype(&TSPI_lineDrop) lineDrop;
    decltype(&TSPI_lineCloseCall) lineCloseCall;
    decltype(&TSPI_lineGetCallInfo) lineGetCallInfo;
    decltype(&TSPI_lineGetCallStatus) lineGetCallStatus;
    decltype(&TSPI_lineGetCallAddressID) lineGetCallAddressID;

private:
    template <typename Function>
    void Find(Function& function, const char* name);
};

}  // namespace velmora
