#include "tools/velmoractl/tapi_error.h"

#include <string_view>

#include "tools/velmoractl/tapi_flags.h"

namespace velmora::ctl {
namespace {

struct TapiError {
    uint32_t code;
    std::string_view name;
    std::string_view meaning;
};

const TapiError kErrors[] = {
    {0x8000000E, "LINEERR_INIFILECORRUPT", "the list of providers in the registry is damaged"},
    {0x80000032, "LINEERR_INVALPARAM", "TAPI does not take the provider's name or ID"},
    {0x80000035, "LINEERR_INVALPOINTER", "TAPI does not take a pointer"},
    {0x80000043, "LINEERR_NODRIVER", "the provider, or something that it needs, is not there"},
    {0x80000044, "LINEERR_NOMEM", "there is not enough memory"},
    {0x80000048, "LINEERR_OPERATIONFAILED", "the telephony service could not do it; often the user lacks the rights"},
    {0x80000049, "LINEERR_OPERATIONUNAVAIL", "the telephony service does not offer that"},
    {0x8000004B, "LINEERR_RESOURCEUNAVAIL", "the telephony service is short of something"},
    {0x80000056, "LINEERR_NOMULTIPLEINSTANCE", "the provider is added already"},
    {0x8000005D, "LINEERR_USERCANCELLED", "somebody has cancelled it"},
    {0x80000061, "LINEERR_SERVICE_NOT_RUNNING", "the telephony service does not run and cannot be started"},
};

}  // namespace

ByteString TapiErrorText(uint32_t code) {
    ByteString number = HexText(code, 8);
    for (const TapiError& error : kErrors) {
        if (error.code == code) return ByteString(error.name) + " (" + number + "): " + ByteString(error.meaning);
    }
    return number;
}

}  // namespace velmora::ctl
