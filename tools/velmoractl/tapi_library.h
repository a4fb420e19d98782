#pragma once

#include <windows.h>
// TAPI's header is written for a windows.h that has not been cut down.
#include <objbase.h>
#include <tapi.h>

#include "config/byte_string.h"

namespace velmora::ctl {

// The two functions of Windows' TAPI that add a provider to the telephony service and remove it. Loaded when they are
// needed, and from System32 alone: as administrator, nothing that lies beside this program may take their place.
struct TapiLibrary {
    // Gives what went wrong as a sentence, else nothing. The library stays loaded until the process ends.
    ByteString Load();

    decltype(&::lineAddProviderW) lineAddProviderW = nullptr;
    decltype(&::lineRemoveProvider) lineRemoveProvider = nullptr;
};

}  // namespace velmora::ctl
