#include "tools/velmoractl/stored_settings.h"

#include "config/registry.h"

namespace velmora::ctl {

StoredSetting ReadStoredSetting(const SettingRule& rule) {
    const RegistryValue value = ReadRegistryValue(ByteString(rule.name));
    if (value.status != RegistryStatus::kDone) return {};
    return {true, value.multiString ? value.bytes : value.bytes.substr(0, value.bytes.find('\0'))};
}

ByteString EffectiveText(const SettingRule& rule) {
    ByteString text = ReadStoredSetting(rule).text;
    return text.empty() ? ByteString(rule.defaultText) : text;
}

ByteString EffectiveText(std::string_view name) {
    const SettingRule* rule = FindSettingRule(name);
    return rule == nullptr ? ByteString() : EffectiveText(*rule);
}

std::vector<FaultySetting> FindFaultySettings() {
    std::vector<FaultySetting> faulty;
    for (const SettingRule& rule : SettingRules()) {
        const ByteString stored = ReadStoredSetting(rule).text;
        const SettingFault fault = FindSettingFault(rule, stored);
        if (!fault.problem.empty()) faulty.push_back({&rule, FaultSentence(rule, stored, fault), fault.stopsLoading});
    }
    return faulty;
}

}  // namespace velmora::ctl
