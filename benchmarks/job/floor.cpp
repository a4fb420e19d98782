#include <windows.h>
// TAPI's header is written for a windows.h that has not been cut down.
#include <objbase.h>
// and the interface between TAPI and a provider
#include <tapi.h>
#include <tspi.h>

#include <array>
#include <cstdlib>
#include <cstring>

#include "benchmarks/job/floor_link.h"
#include "benchmarks/job/floor_log.h"

// The floor of the job: a provider that knows beforehand what it will send and receive, and does nothing but the system
// calls for these bytes. What a provider adds to them is what the benchmark shows.
//
// Winsock and the log are called in the provider's order and sizes. Of TLS it plays the bytes, and spins for the time
// that they cost the best client measured.

namespace velmora {
namespace {

constexpr char kKeyPath[] = R"(SOFTWARE\velmora\tapi)";
constexpr DWORD kValueBytes = 16384;

struct Value {
    char bytes[kValueBytes];
};

// One value of the registry, with the key opened and closed for it as the provider does. Missing: empty.
void ReadValue(const char* name, Value& value) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKeyPath, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) return;
    DWORD length = kValueBytes;
    if (RegQueryValueExA(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(value.bytes), &length) != ERROR_SUCCESS) {
        value.bytes[0] = '\0';
    }
    RegCloseKey(key);
}

void Start() {
    Value value;
    char address[MAX_PATH];
    char port[16];
    for (const char* name : {"username", "password", "domain"}) ReadValue(name, value);
    ReadValue("address", value);
    lstrcpynA(address, value.bytes, sizeof address);
    ReadValue("port", value);
    lstrcpynA(port, value.bytes, sizeof port);
    for (const char* name : {"encrypt", "autooriginate"}) ReadValue(name, value);
    ReadValue("loglevel", value);
    const bool logIsWritten = std::strcmp(value.bytes, "5") == 0;
    ReadValue("loglength", value);
    ReadValue("logfile", value);
    SetLog(value.bytes, logIsWritten);
    ReadValue("guid", value);
    StartLink(address, port);
}

}  // namespace
}  // namespace velmora

extern "C" {

// Never called. It makes the loader load user32, as for the provider.
__declspec(dllexport) int ShowMessage(const char* text);
__declspec(dllexport) int ShowMessage(const char* text) {
    return MessageBoxA(nullptr, text, text, MB_OK);
}

// Names the script to play, before the start.
__declspec(dllexport) void PlayScript(const char* path);
__declspec(dllexport) void PlayScript(const char* path) {
    velmora::LoadScript(path);
}

__declspec(dllexport) LONG TSPIAPI
    TSPI_providerInit(DWORD /*version*/, DWORD /*permanentProviderId*/, DWORD /*lineDeviceIdBase*/,
                      DWORD /*phoneDeviceIdBase*/, DWORD_PTR /*lines*/, DWORD_PTR /*phones*/,
                      ASYNC_COMPLETION /*completion*/, LPDWORD /*options*/) {
    velmora::Start();
    return 0;
}

__declspec(dllexport) LONG TSPIAPI TSPI_providerShutdown(DWORD /*version*/, DWORD /*permanentProviderId*/) {
    velmora::StopLink();
    return 0;
}

__declspec(dllexport) LONG TSPIAPI
    TSPI_lineMakeCall(DRV_REQUESTID requestId, HDRVLINE /*line*/, HTAPICALL /*tapiCall*/, LPHDRVCALL /*driverCall*/,
                      LPCWSTR /*address*/, DWORD /*countryCode*/, LPLINECALLPARAMS const /*params*/) {
    velmora::SendNextRequest();
    return static_cast<LONG>(requestId);
}

__declspec(dllexport) LONG TSPIAPI TSPI_lineCloseCall(HDRVCALL /*driverCall*/) {
    velmora::SendNextRequest();
    return 0;
}

}  // extern "C"
