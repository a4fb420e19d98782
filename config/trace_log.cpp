#include "config/trace_log.h"

#include <atomic>
#include <cstdio>

#include "config/clock.h"
#include "config/log_file.h"
#include "config/settings.h"
#include "config/text_numbers.h"

namespace velmora {
namespace {

// No lock: every thread logs, each record is written by one call, and the C runtime keeps that call whole. Two first
// records that race may open the file twice; accepted.
std::atomic<uint64_t> timeBaseMs = 0;       // on the 64-bit tick counter; 0 until the first WriteLog
std::atomic<std::FILE*> logFile = nullptr;  // null until a record has passed the threshold while a path was set
std::atomic<int32_t> recordCount = 0;       // records that have reached the open file, dropped ones included

// What the settings' path opens, kept for the life of the process; null when there is none or it cannot be opened.
std::FILE* OpenFile() {
    std::FILE* file = logFile;
    if (file == nullptr && !settings.logfile.empty()) {
        file = OpenLogFile(settings.logfile);
        logFile = file;
    }
    return file;
}

void AppendPadded(ByteString& text, uint64_t number, size_t digits) {
    const ByteString decimal = DecimalText(static_cast<int64_t>(number));
    if (decimal.size() < digits) text.append(digits - decimal.size(), '0');
    text += decimal;
}

// Text and detail joined, up to the first NUL of either.
void AppendToFirstNul(ByteString& record, std::string_view text, std::string_view detail) {
    const size_t end = text.find('\0');
    record += text.substr(0, end);
    if (end == std::string_view::npos) record += detail.substr(0, detail.find('\0'));
}

}  // namespace

void WriteLog(int32_t level, std::string_view text, std::string_view detail) {
    if (!LogsLevel(level)) return;
    std::FILE* file = OpenFile();
    if (file == nullptr) return;
    if (recordCount++ >= settings.loglength) return;

    const ByteString record = FormatLogRecord(TickCount64() - timeBaseMs, level, text, detail);
    // One call, so that records of two threads never mix; flushed, so that the file is whole when the process dies.
    static_cast<void>(std::fwrite(record.data(), 1, record.size(), file));
    static_cast<void>(std::fflush(file));
}

bool LogsLevel(int32_t level) {
    const uint64_t nowMs = TickCount64();
    // The very first call takes the time, whatever its level, even when nothing is written.
    uint64_t none = 0;
    timeBaseMs.compare_exchange_strong(none, nowMs);
    return level <= settings.loglevel;
}

ByteString FormatLogRecord(uint64_t elapsedMs, int32_t level, std::string_view text, std::string_view detail) {
    ByteString record;
    record.reserve(sizeof("[00:00:00:000]:-0000000000 \r\n") + text.size() + detail.size());
    record += '[';
    AppendPadded(record, elapsedMs / 3600000, 1);
    record += ':';
    AppendPadded(record, elapsedMs / 60000 % 60, 2);
    record += ':';
    AppendPadded(record, elapsedMs / 1000 % 60, 2);
    record += ':';
    AppendPadded(record, elapsedMs % 1000, 3);
    record += "]:";
    record += DecimalText(level);
    record += ' ';
    AppendToFirstNul(record, text, detail);
    // The file is in text mode, so "\r\n" reaches the disk as CR CR LF. Every log record ends so; keep.
    record += "\r\n";
    return record;
}

}  // namespace velmora
