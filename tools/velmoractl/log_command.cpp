#include <windows.h>

#include <optional>

#include "config/text_numbers.h"
#include "tools/velmoractl/commands.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/file_places.h"
#include "tools/velmoractl/log_folder.h"
#include "tools/velmoractl/log_follow.h"
#include "tools/velmoractl/log_tap.h"
#include "tools/velmoractl/log_view.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/setting_writer.h"
#include "tools/velmoractl/settings_access.h"
#include "tools/velmoractl/stored_settings.h"

namespace velmora::ctl {
namespace {

constexpr OptionRule kOptions[] = {
    {"--follow", false}, {"--level", true}, {"--length", true}, {"--brief", false}, {"--help", false}};

constexpr std::string_view kHelp =
    R"(velmoractl log [show [FILE]] [--level N] [--brief]
velmoractl log --follow [--level N] [--brief]
velmoractl log on [FILE] [--level N] [--length N]
velmoractl log off

Shows the provider's trace log, and turns it on and off. CSTA messages are laid out and
tied to what they answer; the calls are listed at the end. Passwords are masked here, but
not in the log itself.

  show      shows the log that is set (logfile), or FILE. Windows lets nobody read the
            log while the telephony service runs that writes it: stop it first, or follow
  --follow  shows the log while it is written, from the next start of the telephony
            service until Ctrl+C; nothing goes to the disk, and the settings are then as
            they were. Needs an administrator. Meanwhile velmoractl dial and caps have to
            wait, and so has the provider when the output of this is held up
  on        stores logfile, loglevel and loglength. Without FILE it is trace.log in the
            folder Velmora of ProgramData, which only administrators can read. A FILE
            has to be where the service's account (NETWORK SERVICE) may write
  off       makes logfile, loglevel and loglength empty: the defaults apply, no log

  --level N   show, --follow: records up to this level only; on: what is to be written.
              5 has every message, 0 next to nothing (show: all; --follow and on: 5)
  --length N  on: the records that one start of the service writes at most (100000)
  --brief     leave the XML of the messages out

The service takes the settings at its next start, and begins the log anew then:
  net stop tapisrv
  net start tapisrv

Exit code: 0 done, 2 wrong command line, 4 a value is refused, 9 there is no log or it
cannot be read, 10 the registry cannot be read or written.
)";

constexpr uint32_t kHighest = INT32_MAX;
constexpr int32_t kMessagesLevel = 5;
constexpr uint32_t kDefaultLength = 100000;
constexpr DWORD kChunkBytes = 65536;

ExitCode NoLog(const ByteString& problem, const ByteString& advice) {
    PrintErrorLine("velmoractl: " + Printable(problem));
    PrintErrorLine(advice);
    return ExitCode::kNotVisible;
}

ExitCode CannotOpen(const ByteString& path, DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            if (path != EffectiveText("logfile")) {
                return NoLog(path + " is not there.", "The log that is set is shown by: velmoractl log");
            }
            return NoLog(path + " is not there.",
                         "The provider makes the log with its first record: has the telephony service been restarted "
                         "since the log was turned on?");
        case ERROR_SHARING_VIOLATION:
            return NoLog(path + " is being written, and nobody else may read it until the telephony service stops.",
                         "Stop it first: net stop tapisrv\nOr see it as it is written: velmoractl log --follow");
        case ERROR_ACCESS_DENIED:
            return NoLog(path + " may not be read by this user.", "Run velmoractl as administrator.");
        default:
            return NoLog(path + " cannot be read: Windows error " + DecimalText(error) + ".",
                         "Is logfile the path of a file? velmoractl config get logfile");
    }
}

// Shows an open log to its end; whether there was any record.
bool ShowRecords(HANDLE file, LogView& view) {
    TraceLogReader reader;
    bool any = false;
    const auto show = [&](const LogRecord& record) {
        any = true;
        Print(view.Show(record));
    };
    ByteString chunk(kChunkBytes, '\0');
    DWORD count = 0;
    while (ReadFile(file, chunk.data(), kChunkBytes, &count, nullptr) != 0 && count > 0) {
        reader.Append(chunk.substr(0, count));
        while (const std::optional<LogRecord> record = reader.Next()) show(*record);
    }
    if (const std::optional<LogRecord> record = reader.Rest()) show(*record);
    return any;
}

ExitCode Show(const ByteString& path, int32_t level, bool brief) {
    if (path.empty()) return NoLog("The trace log is off: no logfile is set.", "Turn it on with: velmoractl log on");
    if (IsLogTapPath(path)) {
        return NoLog("The trace log goes to another velmoractl, not to a file.",
                     "When none runs any more, it was killed; velmoractl log off mends that.");
    }
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return CannotOpen(path, GetLastError());
    LogView view(level, brief);
    const bool any = ShowRecords(file, view);
    CloseHandle(file);
    if (!any) return NoLog(path + " holds no record of the trace log.", "Is this the log?");
    Print(view.Calls());
    return ExitCode::kDone;
}

struct WantedSetting {
    std::string_view name;
    ByteString value;
};

// Stores all of them, or nothing when one is refused.
ExitCode StoreAll(std::span<const WantedSetting> wanted) {
    for (const WantedSetting& setting : wanted) {
        const CheckedSetting checked = CheckSetting(*FindSettingRule(setting.name), setting.value);
        if (checked.error.empty()) continue;
        PrintErrorLine("velmoractl: " + checked.error + " Nothing is changed.");
        return ExitCode::kBadSettings;
    }
    for (const WantedSetting& setting : wanted) {
        const SettingRule& rule = *FindSettingRule(setting.name);
        const ExitCode code = StoreSetting(rule, CheckSetting(rule, setting.value));
        if (code != ExitCode::kDone) return code;
    }
    Print(
        "The telephony service takes this at its next start:\n"
        "  net stop tapisrv\n"
        "  net start tapisrv\n");
    return ExitCode::kDone;
}

void WarnOfMissingFolder(const ByteString& path) {
    const ByteString folder = path.substr(0, path.find_last_of('\\') + 1);
    if (!folder.empty() && !FileExists(folder)) {
        PrintErrorLine("Mind: the folder " + Printable(folder) + " is not there, and the provider makes none.");
    }
}

ExitCode TurnOn(const ByteString& path, uint32_t level, uint32_t length) {
    const WantedSetting wanted[] = {
        {"logfile", path}, {"loglevel", DecimalText(level)}, {"loglength", DecimalText(length)}};
    const ExitCode code = StoreAll(wanted);
    if (code == ExitCode::kDone) {
        WarnOfMissingFolder(path);
        PrintErrorLine("Mind: the log holds the user's password. Delete it when it has served its purpose.");
    }
    return code;
}

ExitCode TurnOff() {
    const WantedSetting wanted[] = {{"logfile", ""}, {"loglevel", ""}, {"loglength", ""}};
    return StoreAll(wanted);
}

struct LogOptions {
    ByteString action = "show";
    std::optional<ByteString> file;
    bool brief = false;
    std::optional<uint32_t> level;
    std::optional<uint32_t> length;
};

// Reads the number behind an option, if it is there; gives what is wrong with it as a sentence, else nothing.
ByteString ReadNumber(const Arguments& arguments, const ByteString& option, std::optional<uint32_t>& number) {
    if (!arguments.Has(option)) return {};
    number = ParseWholeNumber(arguments.options.at(option), kHighest);
    return number ? ByteString() : option + " takes a whole number.";
}

ByteString ReadOptions(const Arguments& arguments, LogOptions& options) {
    const std::vector<ByteString>& words = arguments.words;
    options.brief = arguments.Has("--brief");
    if (arguments.Has("--follow")) {
        if (!words.empty()) return "--follow takes no \"" + Printable(words[0]) + "\".";
        options.action = "follow";
    } else if (!words.empty()) {
        options.action = words[0];
    }
    const bool takesFile = options.action == "show" || options.action == "on";
    if (!takesFile && options.action != "off" && options.action != "follow") return "log takes show, on or off.";
    if (words.size() > (takesFile ? 2U : 1U)) {
        return "log " + options.action + " takes no \"" + Printable(words.back()) +
               "\"; put a FILE with spaces in quotes.";
    }
    if (words.size() == 2) options.file = words[1];
    if (arguments.Has("--length") && options.action != "on") return "--length goes with log on.";
    const ByteString problem = ReadNumber(arguments, "--level", options.level);
    return problem.empty() ? ReadNumber(arguments, "--length", options.length) : problem;
}

ExitCode Run(const Arguments& arguments) {
    LogOptions options;
    const ByteString problem = ReadOptions(arguments, options);
    if (!problem.empty()) return UsageError("log", problem);

    if (options.action == "off") return TurnOff();
    if (options.action == "on") {
        const ByteString path = options.file ? FullPath(*options.file) : DefaultLogPath();
        return TurnOn(path, options.level.value_or(kMessagesLevel), options.length.value_or(kDefaultLength));
    }
    if (options.action == "follow") {
        return FollowLog(static_cast<int32_t>(options.level.value_or(kMessagesLevel)), options.brief);
    }
    if (!options.file && !MayReadSettings()) return RefuseSettings(false);
    const ByteString path = options.file ? *options.file : EffectiveText("logfile");
    return Show(path, static_cast<int32_t>(options.level.value_or(kHighest)), options.brief);
}

}  // namespace

const Command kLogCommand = {"log", "shows the trace log, turns it on and off", kHelp, kOptions, Run, false};

}  // namespace velmora::ctl
