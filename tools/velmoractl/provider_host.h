#pragma once

#include <windows.h>

#include <tspi.h>

#include <exception>

#include "config/byte_string.h"

namespace velmora::ctl {

inline constexpr char kProviderFileName[] = "velmora.tsp";

// The provider's library and the entry points that a call needs. Each is called as Microsoft's pages on the Telephony
// Service Provider Interface say.
struct ProviderHost {
    // Loads the library at path and finds the entry points; gives what went wrong as a sentence, else nothing. The
    // library stays loaded until the process ends.
    ByteString Load(const ByteString& path);

    decltype(&TSPI_lineNegotiateTSPIVersion) lineNegotiateTSPIVersion = nullptr;
    decltype(&TSPI_providerEnumDevices) providerEnumDevices = nullptr;
    decltype(&TSPI_providerInit) providerInit = nullptr;
    decltype(&TSPI_providerShutdown) providerShutdown = nullptr;
    decltype(&TSPI_lineGetDevCaps) lineGetDevCaps = nullptr;
    decltype(&TSPI_lineGetAddressCaps) lineGetAddressCaps = nullptr;
    decltype(&TSPI_lineOpen) lineOpen = nullptr;
    decltype(&TSPI_lineSetStatusMessages) lineSetStatusMessages = nullptr;
    decltype(&TSPI_lineMakeCall) lineMakeCall = nullptr;
    decltype(&TSPI_lineCloseCall) lineCloseCall = nullptr;
    decltype(&TSPI_lineClose) lineClose = nullptr;
    decltype(&TUISPI_providerConfig) providerConfig = nullptr;
};

// What a call into the provider gave: TAPI's code, or the text of an exception. The provider lets those of the standard
// library out: a setting that is no number, for one.
struct ProviderResult {
    LONG code = 0;
    ByteString thrown;

    bool Threw() const { return !thrown.empty(); }
    bool Good() const { return code == 0 && !Threw(); }
};

template <typename Call>
ProviderResult CallProvider(const Call& call) {
    try {
        return {call(), {}};
    } catch (const std::exception& exception) {
        return {0, exception.what()};
    }
}

// Where the provider is: velmora.tsp beside this program; when it is not there, in the System32 folder.
ByteString DefaultProviderPath();

}  // namespace velmora::ctl
