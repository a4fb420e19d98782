#pragma once

#include <vector>

#include "config/byte_string.h"
#include "tools/velmoractl/setting_rules.h"

namespace velmora::ctl {

// The provider's settings as they stand in the registry.

struct StoredSetting {
    bool present = false;
    ByteString text;  // as ReadSetting gives it to the provider; empty when it is not present
};

StoredSetting ReadStoredSetting(const SettingRule& rule);

// The text that applies: the stored one, or the default when that is missing or empty.
ByteString EffectiveText(const SettingRule& rule);
ByteString EffectiveText(std::string_view name);

struct FaultySetting {
    const SettingRule* rule;
    ByteString sentence;  // what is wrong
    bool stopsLoading;    // as in SettingFault
};

// Every stored setting that the provider cannot work with, in the order of the rules.
std::vector<FaultySetting> FindFaultySettings();

}  // namespace velmora::ctl
