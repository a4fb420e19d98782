#include "tools/velmoractl/log_follow.h"

#include <optional>

#include "config/registry.h"
#include "config/text_numbers.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/interrupt.h"
#include "tools/velmoractl/log_override.h"
#include "tools/velmoractl/log_tap.h"
#include "tools/velmoractl/log_view.h"

namespace velmora::ctl {
namespace {

constexpr DWORD kLookMs = 20;  // between two looks at the pipe; the provider waits when it is full

// One run of the provider, from its first record to the last.
class FollowedRun {
public:
    FollowedRun(int32_t level, bool brief) : view(level, brief) {}

    void Take(const ByteString& bytes) {
        if (bytes.empty()) return;
        reader.Append(bytes);
        while (const std::optional<LogRecord> record = reader.Next()) Print(view.Show(*record));
    }

    void End() {
        if (const std::optional<LogRecord> record = reader.Rest()) Print(view.Show(*record));
        Print(view.Calls());
    }

private:
    TraceLogReader reader;
    LogView view;
};

void FollowUntilInterrupted(LogTap& tap, int32_t level, bool brief) {
    std::optional<FollowedRun> run(std::in_place, level, brief);
    while (!Interrupted()) {
        run->Take(tap.Read());
        if (tap.WriterLeft()) {
            run->Take(tap.Read());
            run->End();
            PrintErrorLine("-- The provider has ended. Its next start is waited for; Ctrl+C ends.");
            run.emplace(level, brief);
            tap.Reopen();
        }
        Sleep(kLookMs);
    }
    run->Take(tap.Read());
    run->End();
}

}  // namespace

ExitCode FollowLog(int32_t level, bool brief) {
    LogTap tap;
    const LogOverride toTap(tap.Path(), DecimalText(level));
    if (!tap.Open() || !toTap.Active()) {
        PrintErrorLine("velmoractl: The log cannot be followed: HKEY_LOCAL_MACHINE\\" + ByteString(kRegistryPath) +
                       " cannot be written. Run velmoractl as administrator.");
        return ExitCode::kRegistry;
    }
    PrintErrorLine(
        "-- The log comes here from the next start of the telephony service until Ctrl+C:\n"
        "--   net stop tapisrv\n"
        "--   net start tapisrv");
    FollowUntilInterrupted(tap, level, brief);
    PrintErrorLine(
        "-- The settings of the log are as they were. A provider that runs now writes none until its next start.");
    return ExitCode::kDone;
}

}  // namespace velmora::ctl
