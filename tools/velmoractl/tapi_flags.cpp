#include "tools/velmoractl/tapi_flags.h"

#include <charconv>

namespace velmora::ctl {

namespace {

const std::string_view kAddressModesNames[] = {"ADDRESSID", "DIALABLEADDR"};
const std::string_view kBearerModesNames[] = {"VOICE",         "SPEECH",           "MULTIUSE",    "DATA",
                                              "ALTSPEECHDATA", "NONCALLSIGNALING", "PASSTHROUGH", "RESTRICTEDDATA"};
const std::string_view kMediaModesNames[] = {
    "",      "UNKNOWN", "INTERACTIVEVOICE", "AUTOMATEDVOICE", "DATAMODEM", "G3FAX",
    "TDD",   "G4FAX",   "DIGITALDATA",      "TELETEX",        "VIDEOTEX",  "TELEX",
    "MIXED", "ADSI",    "VOICEVIEW",        "VIDEO"};
const std::string_view kDigitModesNames[] = {"PULSE", "DTMF", "DTMFEND"};
const std::string_view kToneModesNames[] = {"CUSTOM", "RINGBACK", "BUSY", "BEEP", "BILLING"};
const std::string_view kDevCapFlagsNames[] = {
    "CROSSADDRCONF", "HIGHLEVCOMP",  "LOWLEVCOMP", "MEDIACONTROL", "MULTIPLEADDR",    "CLOSEDROP",      "DIALBILLING",
    "DIALQUIET",     "DIALDIALTONE", "MSP",        "CALLHUB",      "CALLHUBTRACKING", "PRIVATEOBJECTS", "LOCAL"};
const std::string_view kLineFeaturesNames[] = {"DEVSPECIFIC",  "DEVSPECIFICFEAT", "FORWARD",
                                               "MAKECALL",     "SETMEDIACONTROL", "SETTERMINAL",
                                               "SETDEVSTATUS", "FORWARDFWD",      "FORWARDDND"};
const std::string_view kAddressSharingNames[] = {"PRIVATE", "BRIDGEDEXCL", "BRIDGEDNEW", "BRIDGEDSHARED", "MONITORED"};
const std::string_view kCallInfoStatesNames[] = {
    "OTHER",         "DEVSPECIFIC",   "BEARERMODE",   "RATE",         "MEDIAMODE",     "APPSPECIFIC",   "CALLID",
    "RELATEDCALLID", "ORIGIN",        "REASON",       "COMPLETIONID", "NUMOWNERINCR",  "NUMOWNERDECR",  "NUMMONITORS",
    "TRUNK",         "CALLERID",      "CALLEDID",     "CONNECTEDID",  "REDIRECTIONID", "REDIRECTINGID", "DISPLAY",
    "USERUSERINFO",  "HIGHLEVELCOMP", "LOWLEVELCOMP", "CHARGINGINFO", "TERMINAL",      "DIALPARAMS",    "MONITORMODES",
    "TREATMENT",     "QOS",           "CALLDATA"};
const std::string_view kCallPartyIdsNames[] = {"BLOCKED", "OUTOFAREA", "NAME",   "ADDRESS",
                                               "PARTIAL", "UNKNOWN",   "UNAVAIL"};
const std::string_view kCallStatesNames[] = {"IDLE",           "OFFERING",           "ACCEPTED",     "DIALTONE",
                                             "DIALING",        "RINGBACK",           "BUSY",         "SPECIALINFO",
                                             "CONNECTED",      "PROCEEDING",         "ONHOLD",       "CONFERENCED",
                                             "ONHOLDPENDCONF", "ONHOLDPENDTRANSFER", "DISCONNECTED", "UNKNOWN"};
const std::string_view kDialToneModesNames[] = {"NORMAL", "SPECIAL", "INTERNAL", "EXTERNAL", "UNKNOWN", "UNAVAIL"};
const std::string_view kBusyModesNames[] = {"STATION", "TRUNK", "UNKNOWN", "UNAVAIL"};
const std::string_view kSpecialInfoNames[] = {"NOCIRCUIT", "CUSTIRREG", "REORDER", "UNKNOWN", "UNAVAIL"};
const std::string_view kDisconnectModesNames[] = {
    "NORMAL",     "UNKNOWN",     "REJECT",     "PICKUP",       "FORWARDED",    "BUSY",       "NOANSWER",
    "BADADDRESS", "UNREACHABLE", "CONGESTION", "INCOMPATIBLE", "UNAVAIL",      "NODIALTONE", "NUMBERCHANGED",
    "OUTOFORDER", "TEMPFAILURE", "QOSUNAVAIL", "BLOCKED",      "DONOTDISTURB", "CANCELLED"};
const std::string_view kAddrCapFlagsNames[] = {
    "FWDNUMRINGS",     "PICKUPGROUPID",  "SECURE",         "BLOCKIDDEFAULT",
    "BLOCKIDOVERRIDE", "DIALED",         "ORIGOFFHOOK",    "DESTOFFHOOK",
    "FWDCONSULT",      "SETUPCONFNULL",  "AUTORECONNECT",  "COMPLETIONID",
    "TRANSFERHELD",    "TRANSFERMAKE",   "CONFERENCEHELD", "CONFERENCEMAKE",
    "PARTIALDIAL",     "FWDSTATUSVALID", "FWDINTEXTADDR",  "FWDBUSYNAADDR",
    "ACCEPTTOALERT",   "CONFDROP",       "PICKUPCALLWAIT", "PREDICTIVEDIALER",
    "QUEUE",           "ROUTEPOINT",     "HOLDMAKESNEW",   "NOINTERNALCALLS",
    "NOEXTERNALCALLS", "SETCALLINGID",   "ACDGROUP",       "NOPSTNADDRESSTRANSLATION"};
const std::string_view kCallFeaturesNames[] = {
    "ACCEPT",         "ADDTOCONF",     "ANSWER",       "BLINDTRANSFER",  "COMPLETECALL",        "COMPLETETRANSF",
    "DIAL",           "DROP",          "GATHERDIGITS", "GENERATEDIGITS", "GENERATETONE",        "HOLD",
    "MONITORDIGITS",  "MONITORMEDIA",  "MONITORTONES", "PARK",           "PREPAREADDCONF",      "REDIRECT",
    "REMOVEFROMCONF", "SECURECALL",    "SENDUSERUSER", "SETCALLPARAMS",  "SETMEDIACONTROL",     "SETTERMINAL",
    "SETUPCONF",      "SETUPTRANSFER", "SWAPHOLD",     "UNHOLD",         "RELEASEUSERUSERINFO", "SETTREATMENT",
    "SETQOS",         "SETCALLDATA"};
const std::string_view kAddrFeaturesNames[] = {
    "FORWARD", "MAKECALL",   "PICKUP",      "SETMEDIACONTROL", "SETTERMINAL",   "SETUPCONF",  "UNCOMPLETECALL",
    "UNPARK",  "PICKUPHELD", "PICKUPGROUP", "PICKUPDIRECT",    "PICKUPWAITING", "FORWARDFWD", "FORWARDDND"};

}  // namespace

const FlagTable kAddressModes = {"LINEADDRESSMODE_", kAddressModesNames};
const FlagTable kBearerModes = {"LINEBEARERMODE_", kBearerModesNames};
const FlagTable kMediaModes = {"LINEMEDIAMODE_", kMediaModesNames};
const FlagTable kDigitModes = {"LINEDIGITMODE_", kDigitModesNames};
const FlagTable kToneModes = {"LINETONEMODE_", kToneModesNames};
const FlagTable kDevCapFlags = {"LINEDEVCAPFLAGS_", kDevCapFlagsNames};
const FlagTable kLineFeatures = {"LINEFEATURE_", kLineFeaturesNames};
const FlagTable kAddressSharing = {"LINEADDRESSSHARING_", kAddressSharingNames};
const FlagTable kCallInfoStates = {"LINECALLINFOSTATE_", kCallInfoStatesNames};
const FlagTable kCallPartyIds = {"LINECALLPARTYID_", kCallPartyIdsNames};
const FlagTable kCallStates = {"LINECALLSTATE_", kCallStatesNames};
const FlagTable kDialToneModes = {"LINEDIALTONEMODE_", kDialToneModesNames};
const FlagTable kBusyModes = {"LINEBUSYMODE_", kBusyModesNames};
const FlagTable kSpecialInfo = {"LINESPECIALINFO_", kSpecialInfoNames};
const FlagTable kDisconnectModes = {"LINEDISCONNECTMODE_", kDisconnectModesNames};
const FlagTable kAddrCapFlags = {"LINEADDRCAPFLAGS_", kAddrCapFlagsNames};
const FlagTable kCallFeatures = {"LINECALLFEATURE_", kCallFeaturesNames};
const FlagTable kAddrFeatures = {"LINEADDRFEATURE_", kAddrFeaturesNames};

std::vector<ByteString> FlagNames(const FlagTable& table, uint32_t value) {
    std::vector<ByteString> names;
    uint32_t unnamed = 0;
    for (size_t bit = 0; bit < 32; ++bit) {
        const uint32_t flag = uint32_t{1} << bit;
        if ((value & flag) == 0) continue;
        if (bit < table.names.size() && !table.names[bit].empty()) {
            names.push_back(ByteString(table.prefix) + ByteString(table.names[bit]));
        } else {
            unnamed |= flag;
        }
    }
    if (unnamed != 0) names.push_back("(" + HexText(unnamed) + " has no name)");
    return names;
}

ByteString HexText(uint32_t value, size_t digits) {
    char text[8];
    const std::to_chars_result result = std::to_chars(text, text + sizeof(text), value, 16);
    const size_t length = static_cast<size_t>(result.ptr - text);
    ByteString hex = "0x";
    if (length < digits) hex.append(digits - length, '0');
    for (size_t index = 0; index < length; ++index) {
        const char digit = text[index];
        hex += digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
    }
    return hex;
}

ByteString ResultText(int32_t code) {
    const uint32_t number = static_cast<uint32_t>(code);
    ByteString hex = HexText(number, 8);
    switch (number) {
        case 0x80000005:
            return "LINEERR_CALLUNAVAIL (" + hex + ")";
        case 0x8000000C:
            return "LINEERR_INCOMPATIBLEAPIVERSION (" + hex + ")";
        case 0x80000018:
            return "LINEERR_INVALCALLHANDLE (" + hex + ")";
        case 0x8000002B:
            return "LINEERR_INVALLINEHANDLE (" + hex + ")";
        default:
            return hex;
    }
}

}  // namespace velmora::ctl
