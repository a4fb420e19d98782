#pragma once

#include <cstdint>
#include <optional>

#include "config/byte_string.h"

namespace velmora::ctl {

// One record of the provider's trace log.
struct LogRecord {
    uint64_t elapsedMs = 0;  // since the process first logged
    int32_t level = 0;       // lower is more important
    ByteString text;         // without the record's line end; line ends inside it are CR LF again

    bool operator==(const LogRecord&) const = default;
};

// Cuts log records out of a stream of the trace log's bytes, however it was split on the way.
//
//   [H:MM:SS:mmm]:LEVEL TEXT CR CR LF
//
// A text may have lines of its own (a CSTA message has many), which end with CR CR LF too, so a record reaches up to
// the next head at the start of a line, not up to the next line end. The last record is taken for whole as soon as its
// line has ended and, when it holds a CSTA message, the message's root element is closed.
class TraceLogReader {
public:
    // Takes the next bytes of the log.
    void Append(const ByteString& bytes);

    // The next whole record; none when more bytes are needed. Bytes before the first head are passed over.
    std::optional<LogRecord> Next();

    // What is left of a last record that is not whole, as a record; none when there is no head. For the end of a log.
    std::optional<LogRecord> Rest();

private:
    bool SkipToHead();                   // moves position to the next head; false when there is none
    LogRecord Take(size_t recordBytes);  // the record at position, which reaches that far

    ByteString buffer;    // bytes of the log; those before position are done with
    size_t position = 0;  // where the next record, or what precedes its head, starts in buffer
};

}  // namespace velmora::ctl
