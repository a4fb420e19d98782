#pragma once

#include <cstdint>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// The trace log: a plain text file of time-stamped log records, the one diagnostic channel of the system. Its path,
// threshold and length come from the settings logfile, loglevel and loglength. It never reports a failure: a record
// that cannot be written is dropped.

// Appends one log record at level (lower is more important), with text and detail joined. Written up to the first NUL.
//
// A record above loglevel is dropped before anything is rendered, and so is each one beyond loglength. The file is
// opened, and emptied, by the first record that passes the threshold while logfile names a path; it then stays open
// until the process ends, and each record is flushed. May be called from any thread.
void WriteLog(int32_t level, std::string_view text, std::string_view detail = {});

// Whether WriteLog would pass a log record at level over its threshold: for a caller whose text costs more to render
// than to ask. It counts as a call of WriteLog, of which the first one takes the time.
bool LogsLevel(int32_t level);

// The log record "[H:MM:SS:mmm]:LEVEL TEXT" with its line end, for elapsedMs since the process first logged. The hours
// are not reduced to days.
ByteString FormatLogRecord(uint64_t elapsedMs, int32_t level, std::string_view text, std::string_view detail);

}  // namespace velmora
