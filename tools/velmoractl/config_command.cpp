#include <optional>

#include "tools/velmoractl/commands.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/setting_rules.h"
#include "tools/velmoractl/setting_writer.h"
#include "tools/velmoractl/stored_settings.h"

namespace velmora::ctl {
namespace {

constexpr OptionRule kOptions[] = {{"--show-password", false}, {"--help", false}};

constexpr std::string_view kHelp =
    R"(velmoractl config get [NAME] [--show-password]
velmoractl config set NAME [VALUE]

Reads and writes the provider's settings in the registry, in the key
HKEY_LOCAL_MACHINE\SOFTWARE\velmora\tapi. A running telephony service takes changes
when it starts the provider anew.

  get        lists all settings; with NAME it prints just that value
  set        checks VALUE and stores it; nothing is stored when it is wrong. Without
             VALUE the setting becomes empty and its default applies; the password is
             then asked for, or read from the standard input when that is no console

  username       account (extension) at the PBX
  password       of that account; shown as *** but for --show-password
  domain         of the PBX
  address        host name or address of the PBX
  port           TCP port of the PBX, 1 to 65535 (443)
  encrypt        TLS on the link to the PBX: on or off (on)
  autooriginate  the PBX dials without waiting for the user's phone: on or off (off)
  loglevel       highest level that the trace log writes: 5 shows messages (0)
  loglength      records that the trace log holds at most (1000)
  logfile        path of the trace log; empty turns it off
  guid           identity of this installation, 8-4-4-4-12 hexadecimal digits

Exit code: 0 done, 2 wrong command line, 4 the value is refused, 10 the registry cannot
be read or written.
)";

constexpr size_t kNameWidth = 15;
constexpr size_t kValueWidth = 24;

void PrintSetting(const SettingRule& rule, bool showPassword) {
    const ByteString stored = ReadStoredSetting(rule).text;
    const ByteString text = stored.empty() ? ByteString(rule.defaultText) : stored;
    const SettingFault fault = FindSettingFault(rule, stored);
    ByteString remark;
    if (!fault.problem.empty()) {
        remark = "WRONG: it " + fault.problem;
    } else if (stored.empty()) {
        remark = text.empty() ? "(not set)" : "(default)";
    }
    ByteString line = Padded(rule.name, kNameWidth) + Padded(ShownText(rule, text, showPassword), kValueWidth);
    line += "  " + remark;
    Print(line.substr(0, line.find_last_not_of(' ') + 1) + "\n");
}

ExitCode UnknownSetting(const ByteString& name) {
    ByteString known;
    for (const SettingRule& rule : SettingRules()) known += (known.empty() ? "" : ", ") + ByteString(rule.name);
    return UsageError("config", "There is no setting \"" + Printable(name) + "\"; there are: " + known + ".");
}

ExitCode Get(const Arguments& arguments) {
    const bool showPassword = arguments.Has("--show-password");
    if (arguments.words.size() > 2) return UsageError("config", "config get takes one NAME at most.");
    if (arguments.words.size() == 1) {
        for (const SettingRule& rule : SettingRules()) PrintSetting(rule, showPassword);
        return ExitCode::kDone;
    }
    const SettingRule* rule = FindSettingRule(arguments.words[1]);
    if (rule == nullptr) return UnknownSetting(arguments.words[1]);
    Print(ShownText(*rule, EffectiveText(*rule), showPassword) + "\n");
    return ExitCode::kDone;
}

// Asks for the password, twice when a person types it; none when it was not given or the two differ.
std::optional<ByteString> AskForPassword() {
    ByteString password;
    if (!ReadSecret("Password: ", password)) {
        PrintErrorLine("velmoractl: No password was given; nothing is changed.");
        return {};
    }
    if (!IsInputConsole()) return password;
    ByteString repeated;
    if (!ReadSecret("Password (repeat): ", repeated) || repeated != password) {
        PrintErrorLine("velmoractl: The passwords do not match; nothing is changed.");
        return {};
    }
    return password;
}

ExitCode Set(const Arguments& arguments) {
    if (arguments.words.size() < 2) return UsageError("config", "Which NAME is to be set?");
    if (arguments.words.size() > 3) {
        return UsageError("config", "config set takes one NAME and one VALUE; put a VALUE with spaces in quotes.");
    }
    const SettingRule* rule = FindSettingRule(arguments.words[1]);
    if (rule == nullptr) return UnknownSetting(arguments.words[1]);

    std::optional<ByteString> value = ByteString();
    if (arguments.words.size() == 3) {
        value = arguments.words[2];
    } else if (rule->kind == SettingKind::kPassword) {
        value = AskForPassword();
        if (!value) return ExitCode::kUsage;
    }
    const CheckedSetting checked = CheckSetting(*rule, *value);
    if (!checked.error.empty()) {
        PrintErrorLine("velmoractl: " + checked.error + " Nothing is changed.");
        return ExitCode::kBadSettings;
    }
    return StoreSetting(*rule, checked);
}

ExitCode Run(const Arguments& arguments) {
    const ByteString action = arguments.words.empty() ? "" : arguments.words.front();
    if (action == "get") return Get(arguments);
    if (action == "set") return Set(arguments);
    return UsageError("config", "config takes get or set.");
}

}  // namespace

const Command kConfigCommand = {"config", "reads and writes the settings", kHelp, kOptions, Run};

}  // namespace velmora::ctl
