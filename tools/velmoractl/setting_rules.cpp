#include "tools/velmoractl/setting_rules.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <stdexcept>

#include "config/text_numbers.h"
#include "tools/velmoractl/plain_text.h"

namespace velmora::ctl {
namespace {

const SettingRule kRules[] = {
    {"username", SettingKind::kText, "", "account (extension) at the PBX"},
    {"password", SettingKind::kPassword, "", "of that account"},
    {"domain", SettingKind::kText, "", "of the PBX"},
    {"address", SettingKind::kText, "", "host name or address of the PBX"},
    {"port", SettingKind::kPort, "443", "TCP port of the CSTA link"},
    {"encrypt", SettingKind::kFlag, "1", "TLS on the CSTA link"},
    {"autooriginate", SettingKind::kFlag, "0", "the PBX dials without waiting for the phone"},
    {"loglevel", SettingKind::kNumber, "0", "highest level that the trace log writes"},
    {"loglength", SettingKind::kNumber, "1000", "records that the trace log holds at most"},
    {"logfile", SettingKind::kPath, "", "path of the trace log; empty turns it off"},
    {"guid", SettingKind::kGuid, "", "identity of this installation"},
};

constexpr int32_t kMaxPort = 65535;
constexpr size_t kDialogMaxBytes = 255;      // what the configuration dialog takes from one of its fields
constexpr size_t kProviderMaxBytes = 16383;  // what the provider reads, with a terminating NUL behind it
constexpr size_t kGuidMinBytes = 34;         // a shorter one fails when the line's identity is cut out of it
constexpr std::string_view kGuidLayout = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

ByteString Quoted(std::string_view text) {
    constexpr size_t kShownBytes = 60;
    ByteString quoted = "\"" + Printable(text.substr(0, kShownBytes));
    if (text.size() > kShownBytes) quoted += "...";
    return quoted + "\"";
}

bool IsHexDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

bool IsGuid(std::string_view text) {
    return std::ranges::equal(text, kGuidLayout, [](char character, char layout) {
        return layout == 'x' ? IsHexDigit(character) : character == layout;
    });
}

// Whether text is one whole decimal number between two limits.
bool IsNumber(std::string_view text, int32_t lowest, int32_t highest) {
    int32_t number = 0;
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end && number >= lowest && number <= highest;
}

CheckedSetting CheckFlag(const SettingRule& rule, std::string_view value) {
    constexpr std::string_view kOn[] = {"1", "on", "yes", "true"};
    constexpr std::string_view kOff[] = {"0", "off", "no", "false"};
    ByteString lowered(value);
    for (char& character : lowered) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    if (std::ranges::find(kOn, lowered) != std::end(kOn)) return {"1", {}, {}};
    if (std::ranges::find(kOff, lowered) != std::end(kOff)) return {"0", {}, {}};
    return {{}, ByteString(rule.name) + " must be on or off (or 1 or 0), not " + Quoted(value) + ".", {}};
}

CheckedSetting CheckText(const SettingRule& rule, std::string_view value) {
    const ByteString name(rule.name);
    CheckedSetting checked{ByteString(value), {}, {}};
    // The path of the log is neither in the dialog nor in a message to the PBX.
    if (rule.kind == SettingKind::kPath) return checked;
    if (value.size() > kDialogMaxBytes) {
        checked.warning = name + " is longer than 255 bytes: the configuration dialog cuts it there on its next OK.";
    } else if (rule.name != "address" && value.find_first_of("<&") != std::string_view::npos) {
        checked.warning = name + " holds a \"<\" or \"&\": it goes to the PBX as it is, which many PBXs refuse.";
    }
    return checked;
}

SettingFault FindNumberFault(const SettingRule& rule, std::string_view stored) {
    try {
        const int32_t number = ParseInt(stored);
        if (rule.kind == SettingKind::kPort && (number < 1 || number > kMaxPort)) {
            return {"is no TCP port (1 to 65535)", false};
        }
        return {};
    } catch (const std::invalid_argument&) {
        return {"is no number", true};
    } catch (const std::out_of_range&) {
        return {"is more than 32 bits hold", true};
    }
}

}  // namespace

std::span<const SettingRule> SettingRules() {
    return kRules;
}

const SettingRule* FindSettingRule(std::string_view name) {
    const SettingRule* found = std::ranges::find(kRules, name, &SettingRule::name);
    return found == std::end(kRules) ? nullptr : found;
}

CheckedSetting CheckSetting(const SettingRule& rule, std::string_view value) {
    const ByteString name(rule.name);
    if (value.find_first_of(std::string_view("\0\r\n", 3)) != std::string_view::npos) {
        return {{}, name + " must be a single line.", {}};
    }
    if (value.size() > kProviderMaxBytes) {
        return {{}, name + " is longer than 16383 bytes, the most that the provider reads.", {}};
    }
    if (value.empty()) return {};

    switch (rule.kind) {
        case SettingKind::kPort:
            if (IsNumber(value, 1, kMaxPort)) break;
            return {{}, name + " must be a number from 1 to 65535, not " + Quoted(value) + ".", {}};
        case SettingKind::kNumber:
            if (IsNumber(value, INT32_MIN, INT32_MAX)) break;
            return {{}, name + " must be a number from -2147483648 to 2147483647, not " + Quoted(value) + ".", {}};
        case SettingKind::kGuid:
            if (IsGuid(value)) break;
            return {{},
                    name +
                        " must be hexadecimal digits in the form 8-4-4-4-12, such as "
                        "\"12345678-1234-4123-8123-123456789012\", not " +
                        Quoted(value) + ".",
                    {}};
        case SettingKind::kFlag:
            return CheckFlag(rule, value);
        default:
            return CheckText(rule, value);
    }
    return {ByteString(value), {}, {}};
}

SettingFault FindSettingFault(const SettingRule& rule, std::string_view stored) {
    if (stored.empty()) {
        const bool needed = rule.name == "address" || rule.name == "username";
        return needed ? SettingFault{"is not set", false} : SettingFault{};
    }
    switch (rule.kind) {
        case SettingKind::kPort:
        case SettingKind::kFlag:
        case SettingKind::kNumber:
            return FindNumberFault(rule, stored);
        case SettingKind::kGuid:
            if (stored.size() >= kGuidMinBytes) return {};
            return {"is too short for a GUID", true};
        default:
            return {};
    }
}

ByteString FaultSentence(const SettingRule& rule, std::string_view stored, const SettingFault& fault) {
    const ByteString value = stored.empty() ? ByteString() : " " + Quoted(stored);
    return ByteString(rule.name) + value + " " + fault.problem + ".";
}

ByteString FixCommand(const SettingRule& rule) {
    ByteString command = "velmoractl config set " + ByteString(rule.name);
    if (rule.kind == SettingKind::kPassword) return command;  // it asks
    command += ' ';
    if (!rule.defaultText.empty()) return command + ByteString(rule.defaultText);
    if (rule.kind == SettingKind::kGuid) return command + ByteString(kGuidLayout);
    for (const char character : rule.name) command += static_cast<char>(character - 'a' + 'A');
    return command;
}

}  // namespace velmora::ctl
