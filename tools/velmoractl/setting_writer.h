#pragma once

#include <string_view>

#include "tools/velmoractl/exit_codes.h"
#include "tools/velmoractl/setting_rules.h"

namespace velmora::ctl {

// Stores a checked setting and shows what applies from now on; says so when the registry cannot be written.
ExitCode StoreSetting(const SettingRule& rule, const CheckedSetting& checked);

// A setting's value on one line; that of a password only when it is to be shown.
ByteString ShownText(const SettingRule& rule, const ByteString& text, bool showPassword);

}  // namespace velmora::ctl
