#include "tools/velmoractl/provider_host.h"

#include "config/text_numbers.h"
#include "tools/velmoractl/file_places.h"

namespace velmora::ctl {
namespace {

ByteString LoadErrorText(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_MOD_NOT_FOUND:
            return "there is no such file";
        case ERROR_BAD_EXE_FORMAT:
            return "it is not a 64-bit Windows library";
        case ERROR_ACCESS_DENIED:
            return "this user may not read it";
        default:
            return "Windows error " + DecimalText(error);
    }
}

// Finds one entry point; missing gets its name when it is the first that is not there.
template <typename EntryPoint>
void Find(HMODULE library, const char* name, EntryPoint& entryPoint, ByteString& missing) {
    // By way of void*: GetProcAddress gives one type for all functions.
    entryPoint = reinterpret_cast<EntryPoint>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    if (entryPoint == nullptr && missing.empty()) missing = name;
}

}  // namespace

ByteString ProviderHost::Load(const ByteString& path) {
    const ByteString fullPath = FullPath(path);
    const HMODULE library = LoadLibraryExA(fullPath.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr) return fullPath + " cannot be loaded: " + LoadErrorText(GetLastError()) + ".";

    ByteString missing;
    Find(library, "TSPI_lineNegotiateTSPIVersion", lineNegotiateTSPIVersion, missing);
    Find(library, "TSPI_providerEnumDevices", providerEnumDevices, missing);
    Find(library, "TSPI_providerInit", providerInit, missing);
    Find(library, "TSPI_providerShutdown", providerShutdown, missing);
    Find(library, "TSPI_lineGetDevCaps", lineGetDevCaps, missing);
    Find(library, "TSPI_lineGetAddressCaps", lineGetAddressCaps, missing);
    Find(library, "TSPI_lineOpen", lineOpen, missing);
    Find(library, "TSPI_lineSetStatusMessages", lineSetStatusMessages, missing);
    Find(library, "TSPI_lineMakeCall", lineMakeCall, missing);
    Find(library, "TSPI_lineCloseCall", lineCloseCall, missing);
    Find(library, "TSPI_lineClose", lineClose, missing);
    Find(library, "TUISPI_providerConfig", providerConfig, missing);
    return missing.empty() ? ByteString() : fullPath + " is not the provider: it has no entry point " + missing + ".";
}

ByteString DefaultProviderPath() {
    const ByteString beside = FolderOfThisProgram() + kProviderFileName;
    return FileExists(beside) ? beside : SystemFolder() + kProviderFileName;
}

}  // namespace velmora::ctl
