#include "tools/velmoractl/setting_writer.h"

#include "config/registry.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/stored_settings.h"

namespace velmora::ctl {

ExitCode StoreSetting(const SettingRule& rule, const CheckedSetting& checked) {
    const ByteString name(rule.name);
    const bool written = WriteRegistryValue(name, checked.stored) == RegistryStatus::kDone;
    if (!written || ReadStoredSetting(rule).text != checked.stored) {
        PrintErrorLine("velmoractl: " + name + " cannot be written to HKEY_LOCAL_MACHINE\\" + kRegistryPath +
                       ". Run velmoractl as administrator.");
        return ExitCode::kRegistry;
    }
    if (EffectiveText(rule).empty()) {
        Print(name + " is empty now\n");
    } else {
        const ByteString remark = checked.stored.empty() ? "  (default)" : "";
        Print(name + " = " + ShownText(rule, EffectiveText(rule), false) + remark + "\n");
    }
    if (!checked.warning.empty()) PrintErrorLine("Mind: " + checked.warning);
    return ExitCode::kDone;
}

ByteString ShownText(const SettingRule& rule, const ByteString& text, bool showPassword) {
    const bool hidden = rule.kind == SettingKind::kPassword && !showPassword && !text.empty();
    return hidden ? "***" : Printable(text);
}

}  // namespace velmora::ctl
