#include "tools/velmoractl/log_note.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

#include "tools/alert_text.h"
#include "tools/velmoractl/plain_text.h"

namespace velmora::ctl {
namespace {

constexpr std::string_view kTrace[] = {"TSPI_", "TUISPI_", "SetStatusMessages: ", "Provider Init", "Loaded TAPI DLL"};

constexpr std::string_view kMissingSetting = "Cannot read registry key ";

constexpr std::string_view kAlertStart = "CSTA: Alert(";

struct TlsAlert {
    bool fatal = false;
    uint32_t description = 0;
};

// The alert in "CSTA: Alert(LEVEL, DESCRIPTION)"; none in any other text.
std::optional<TlsAlert> AlertIn(std::string_view text) {
    if (!text.starts_with(kAlertStart)) return {};
    text.remove_prefix(kAlertStart.size());
    const size_t comma = text.find(", ");
    if (comma == std::string_view::npos) return {};
    const std::string_view number = text.substr(comma + 2);
    TlsAlert alert{.fatal = text.substr(0, comma) == "2"};
    std::from_chars(number.data(), number.data() + number.size(), alert.description);
    return alert;
}

constexpr uint32_t kHandshakeFailure = 40;
constexpr uint32_t kProtocolVersion = 70;
constexpr uint32_t kInsufficientSecurity = 71;

ByteString AlertAdvice(uint32_t description) {
    switch (description) {
        case kHandshakeFailure:
        case kProtocolVersion:
        case kInsufficientSecurity:
            return "The provider speaks TLS 1.0 with AES128-SHA, AES256-SHA, RC4-MD5 or RC4-SHA: allow that at the "
                   "PBX, or go without encryption: velmoractl config set encrypt off";
        default:
            return "The PBX's own log may say why. To go without encryption: velmoractl config set encrypt off";
    }
}

}  // namespace

ByteString NoteText(const LogRecord& record) {
    for (const std::string_view start : kTrace) {
        if (record.text.starts_with(start)) return {};
    }
    if (record.text.starts_with(kMissingSetting)) {
        return "The setting " + record.text.substr(kMissingSetting.size()) + " is not stored";
    }
    const TlsFailure failure = TlsFailureIn(record);
    if (!failure.reason.empty()) return AsSentence(failure.reason);
    if (const std::optional<TlsAlert> alert = AlertIn(record.text)) {
        return "TLS warning from the PBX: " + AlertText(alert->description);
    }
    return record.text;
}

bool IsConnectionFailure(const LogRecord& record) {
    return record.text.starts_with("Connection establishment to ") ||
           record.text == "Could not find a usable WinSock DLL";
}

TlsFailure TlsFailureIn(const LogRecord& record) {
    constexpr const char* kDamage = "Is there something between here and the PBX that changes what passes?";
    if (record.text == "CSTA: Bad Record Mac") {
        return {"what came from the PBX fails the check of its MAC", kDamage};
    }
    if (record.text == "CSTA: Finished failed") {
        return {"the PBX's proof of the TLS handshake is wrong", kDamage};
    }
    const std::optional<TlsAlert> alert = AlertIn(record.text);
    if (!alert || !alert->fatal) return {};
    return FailureByAlert(alert->description);
}

TlsFailure FailureByAlert(uint32_t description) {
    return {"the PBX ended TLS with the alert " + AlertText(description), AlertAdvice(description)};
}

}  // namespace velmora::ctl
