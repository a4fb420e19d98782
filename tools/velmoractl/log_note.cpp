#include "tools/velmoractl/log_note.h"

#include <charconv>
#include <cstdint>
#include <string_view>

#include "config/text_numbers.h"

namespace velmora::ctl {
namespace {

constexpr std::string_view kTrace[] = {"TSPI_", "TUISPI_", "SetStatusMessages: ", "Provider Init", "Loaded TAPI DLL"};

constexpr std::string_view kMissingSetting = "Cannot read registry key ";

struct AlertName {
    uint32_t number;
    std::string_view name;
};

// RFC 5246, 7.2, and RFC 6066, 9.
const AlertName kAlertNames[] = {
    {10, "unexpected_message"},      {20, "bad_record_mac"},
    {21, "decryption_failed"},       {22, "record_overflow"},
    {30, "decompression_failure"},   {40, "handshake_failure"},
    {41, "no_certificate"},          {42, "bad_certificate"},
    {43, "unsupported_certificate"}, {44, "certificate_revoked"},
    {45, "certificate_expired"},     {46, "certificate_unknown"},
    {47, "illegal_parameter"},       {48, "unknown_ca"},
    {49, "access_denied"},           {50, "decode_error"},
    {51, "decrypt_error"},           {70, "protocol_version"},
    {71, "insufficient_security"},   {80, "internal_error"},
    {90, "user_canceled"},           {100, "no_renegotiation"},
    {112, "unrecognized_name"},
};

ByteString AlertText(uint32_t number) {
    for (const AlertName& alert : kAlertNames) {
        if (alert.number == number) return ByteString(alert.name) + " (" + DecimalText(number) + ")";
    }
    return "number " + DecimalText(number);
}

// "CSTA: Alert(LEVEL, NUMBER)" in words; empty for any other text.
ByteString TlsAlertText(std::string_view text) {
    constexpr std::string_view kStart = "CSTA: Alert(";
    if (!text.starts_with(kStart)) return {};
    text.remove_prefix(kStart.size());
    const size_t comma = text.find(", ");
    if (comma == std::string_view::npos) return {};
    const std::string_view numberText = text.substr(comma + 2);
    uint32_t number = 0;
    std::from_chars(numberText.data(), numberText.data() + numberText.size(), number);
    const bool fatal = text.substr(0, comma) == "2";
    return ByteString(fatal ? "The PBX ended the TLS connection with the alert " : "TLS alert from the PBX: ") +
           AlertText(number);
}

}  // namespace

ByteString NoteText(const LogRecord& record) {
    for (const std::string_view start : kTrace) {
        if (record.text.starts_with(start)) return {};
    }
    if (record.text.starts_with(kMissingSetting)) {
        return "The setting " + record.text.substr(kMissingSetting.size()) + " is not stored";
    }
    const ByteString alert = TlsAlertText(record.text);
    return alert.empty() ? record.text : alert;
}

bool IsConnectionFailure(const LogRecord& record) {
    return record.text.starts_with("Connection establishment to ") ||
           record.text == "Could not find a usable WinSock DLL";
}

}  // namespace velmora::ctl
