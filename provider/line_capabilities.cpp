#include <windows.h>

#include <tspi.h>

#include <algorithm>
#include <cstring>

#include "config/settings.h"
#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "provider/line_guid.h"
#include "provider/provider.h"

// What the line and its one address can do. The structures are those of TSPI 2.2; newer headers add fields behind them,
// so their own sizes do not count. The caller is trusted to pass at least the fixed part.

using namespace velmora;

namespace {

constexpr DWORD kDevCapsBytes = 268;
static_assert(offsetof(LINEDEVCAPS, PermanentLineGuid) + sizeof(GUID) == kDevCapsBytes);
constexpr DWORD kAddressCapsBytes = 228;

constexpr wchar_t kProviderInfo[] = L"Velmora TAPI Service Provider";
constexpr wchar_t kLineName[] = L"Velmora PBX";

// Pause, speed, digit duration, wait for the dial tone; in milliseconds.
constexpr LINEDIALPARAMS kMinDialParams = {100, 50, 100, 100};
constexpr LINEDIALPARAMS kDefaultDialParams = {250, 50, 250, 500};
constexpr LINEDIALPARAMS kMaxDialParams = {1000, 50, 1000, 1000};

constexpr DWORD kPartyIdFlags = LINECALLPARTYID_ADDRESS | LINECALLPARTYID_UNKNOWN;

void FillTexts(LINEDEVCAPS& caps) {
    BYTE* start = reinterpret_cast<BYTE*>(&caps);
    caps.dwProviderInfoSize = sizeof(kProviderInfo);
    caps.dwProviderInfoOffset = kDevCapsBytes;
    std::memcpy(start + caps.dwProviderInfoOffset, kProviderInfo, sizeof(kProviderInfo));
    caps.dwLineNameSize = sizeof(kLineName);
    caps.dwLineNameOffset = kDevCapsBytes + caps.dwProviderInfoSize;
    std::memcpy(start + caps.dwLineNameOffset, kLineName, sizeof(kLineName));
}

void FillFixedPart(LINEDEVCAPS& caps, DWORD deviceId) {
    caps.dwPermanentLineID = (providerState.permanentProviderId << 16) | (deviceId - providerState.lineDeviceIdBase);
    caps.dwStringFormat = STRINGFORMAT_ASCII;  // although the texts are UTF-16. Keep
    caps.dwAddressModes = LINEADDRESSMODE_ADDRESSID;
    caps.dwNumAddresses = 1;
    caps.dwBearerModes = LINEBEARERMODE_VOICE;
    caps.dwMediaModes = LINEMEDIAMODE_INTERACTIVEVOICE;
    caps.dwGenerateDigitModes = LINEDIGITMODE_DTMF;
    caps.dwDevCapFlags = LINEDEVCAPFLAGS_CLOSEDROP;
    caps.dwMaxNumActiveCalls = 1;
    caps.MinDialParams = kMinDialParams;
    caps.MaxDialParams = kMaxDialParams;
    caps.DefaultDialParams = kDefaultDialParams;
    caps.dwLineFeatures = LINEFEATURE_MAKECALL;

    const LineGuid guid = ParseLineGuid(settings.guid);
    static_assert(sizeof(guid) == sizeof(caps.PermanentLineGuid));
    std::memcpy(&caps.PermanentLineGuid, &guid, sizeof(guid));
}

// Only these fields are written; the caller's buffer keeps the others. Keep.
void FillFixedPart(LINEADDRESSCAPS& caps, DWORD deviceId) {
    caps.dwLineDeviceID = deviceId;
    caps.dwAddressSharing = LINEADDRESSSHARING_PRIVATE;
    caps.dwCallInfoStates = LINECALLINFOSTATE_MEDIAMODE | LINECALLINFOSTATE_APPSPECIFIC;
    caps.dwCallerIDFlags = kPartyIdFlags;
    caps.dwCalledIDFlags = kPartyIdFlags;
    caps.dwRedirectionIDFlags = kPartyIdFlags;
    caps.dwCallStates = LINECALLSTATE_IDLE | LINECALLSTATE_OFFERING | LINECALLSTATE_ACCEPTED | LINECALLSTATE_DIALING |
                        LINECALLSTATE_CONNECTED;
    caps.dwDialToneModes = LINEDIALTONEMODE_UNAVAIL;
    caps.dwBusyModes = 0x20;  // "unavailable" as a dial-tone mode; TAPI names no such busy mode. Keep
    caps.dwSpecialInfo = LINESPECIALINFO_UNAVAIL;
    caps.dwDisconnectModes = LINEDISCONNECTMODE_UNAVAIL;
    caps.dwMaxNumActiveCalls = 1;
    caps.dwAddrCapFlags = LINEADDRCAPFLAGS_DIALED | LINEADDRCAPFLAGS_ACCEPTTOALERT;
    caps.dwCallFeatures = LINECALLFEATURE_ACCEPT | LINECALLFEATURE_ANSWER | LINECALLFEATURE_DIAL |
                          LINECALLFEATURE_DROP | LINECALLFEATURE_GENERATEDIGITS;
    caps.dwAddressFeatures = LINEADDRFEATURE_FORWARD | LINEADDRFEATURE_MAKECALL;
}

// The address text: the user name in UTF-16, each byte widened with its sign, and filled up with zeros to twice the
// size that dwAddressSize declares, so the last zeros lie beyond it. Applications allow for that; keep.
void FillAddress(LINEADDRESSCAPS& caps, const ByteString& username, DWORD addressBytes) {
    caps.dwAddressSize = addressBytes;
    caps.dwAddressOffset = kAddressCapsBytes;
    BYTE* text = reinterpret_cast<BYTE*>(&caps) + kAddressCapsBytes;
    for (size_t index = 0; index < addressBytes; ++index) {
        const wchar_t unit =
            index < username.size() ? static_cast<wchar_t>(static_cast<signed char>(username[index])) : L'\0';
        std::memcpy(text + index * sizeof(unit), &unit, sizeof(unit));
    }
}

}  // namespace

extern "C" {

LONG TSPIAPI TSPI_lineGetDevCaps(DWORD deviceId, DWORD /*version*/, DWORD /*extVersion*/, LPLINEDEVCAPS caps) {
    WriteLog(5, "TSPI_lineGetDevCaps dwDeviceID=" + DecimalText(deviceId));
    const DWORD total = caps->dwTotalSize;
    ZeroMemory(caps, total);
    caps->dwTotalSize = total;
    caps->dwNeededSize = kDevCapsBytes + sizeof(kProviderInfo) + sizeof(kLineName);
    caps->dwUsedSize = std::min(total, caps->dwNeededSize);
    if (total >= caps->dwNeededSize) FillTexts(*caps);
    FillFixedPart(*caps, deviceId);
    return 0;
}

LONG TSPIAPI TSPI_lineGetAddressCaps(DWORD deviceId, DWORD /*addressId*/, DWORD /*version*/, DWORD /*extVersion*/,
                                     LPLINEADDRESSCAPS caps) {
    WriteLog(5, "TSPI_lineGetAddressCaps");
    const ByteString& username = settings.username;
    const DWORD addressBytes = username.empty() ? 0 : static_cast<DWORD>(2 * username.size() + 2);
    caps->dwNeededSize = kAddressCapsBytes + addressBytes;
    caps->dwUsedSize = std::min(caps->dwTotalSize, caps->dwNeededSize);
    if (caps->dwUsedSize >= kAddressCapsBytes) FillFixedPart(*caps, deviceId);
    if (addressBytes > 0 && caps->dwUsedSize == caps->dwNeededSize) FillAddress(*caps, username, addressBytes);
    return 0;
}

}  // extern "C"
