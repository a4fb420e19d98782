// Stands in for Windows' tapi32.dll, whose functions Wine only has as stubs. Notes each call in a file, and returns
// what it is told: the environment names the file (VELMORA_FAKE_TAPI_CALLS) and the result (VELMORA_FAKE_TAPI_RESULT,
// hexadecimal; 0 when it is missing).

#include <windows.h>
// TAPI's header is written for a windows.h that has not been cut down.
#include <objbase.h>
#include <tapi.h>

#include <cstdlib>
#include <fstream>

#include "config/byte_string.h"

namespace velmora {
namespace {

constexpr DWORD kGivenId = 42;

LONG OrderedResult() {
    char text[16] = "0";
    GetEnvironmentVariableA("VELMORA_FAKE_TAPI_RESULT", text, sizeof(text));
    return static_cast<LONG>(std::strtoul(text, nullptr, 16));
}

// Appends a line to the file of calls.
void Note(const ByteString& call) {
    char path[MAX_PATH] = "";
    GetEnvironmentVariableA("VELMORA_FAKE_TAPI_CALLS", path, sizeof(path));
    std::ofstream(path, std::ios::app) << call << "\n";
}

ByteString WindowText(HWND owner) {
    return owner == nullptr ? ", no window" : ", with a window";
}

}  // namespace

}  // namespace velmora

extern "C" {

__declspec(dllexport) LONG WINAPI lineAddProviderW(LPCWSTR fileName, HWND owner, LPDWORD permanentId) {
    const std::wstring wide = fileName;  // plain ASCII here
    velmora::Note("lineAddProviderW " + velmora::ByteString(wide.begin(), wide.end()) + velmora::WindowText(owner));
    const LONG result = velmora::OrderedResult();
    if (result == 0) *permanentId = velmora::kGivenId;
    return result;
}

__declspec(dllexport) LONG WINAPI lineRemoveProvider(DWORD permanentId, HWND owner) {
    velmora::Note("lineRemoveProvider " + std::to_string(permanentId) + velmora::WindowText(owner));
    return velmora::OrderedResult();
}
}
