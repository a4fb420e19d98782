#include "tools/alert_text.h"

#include <string_view>

#include "config/text_numbers.h"

namespace velmora {
namespace {

struct AlertName {
    uint32_t number;
    std::string_view name;
};

// RFC 5246, 7.2, and RFC 6066, 9.
constexpr AlertName kAlertNames[] = {
    {0, "close_notify"},         {10, "unexpected_message"},
    {20, "bad_record_mac"},      {21, "decryption_failed"},
    {22, "record_overflow"},     {30, "decompression_failure"},
    {40, "handshake_failure"},   {41, "no_certificate"},
    {42, "bad_certificate"},     {43, "unsupported_certificate"},
    {44, "certificate_revoked"}, {45, "certificate_expired"},
    {46, "certificate_unknown"}, {47, "illegal_parameter"},
    {48, "unknown_ca"},          {49, "access_denied"},
    {50, "decode_error"},        {51, "decrypt_error"},
    {70, "protocol_version"},    {71, "insufficient_security"},
    {80, "internal_error"},      {90, "user_canceled"},
    {100, "no_renegotiation"},   {112, "unrecognized_name"},
};

}  // namespace

ByteString AlertText(uint32_t description) {
    for (const AlertName& alert : kAlertNames) {
        if (alert.number == description) return ByteString(alert.name) + " (" + DecimalText(description) + ")";
    }
    return "number " + DecimalText(description);
}

}  // namespace velmora
