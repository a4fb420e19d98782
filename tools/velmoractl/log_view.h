#pragma once

#include <cstdint>

#include "config/byte_string.h"
#include "tools/velmoractl/call_history.h"
#include "tools/velmoractl/trace_log_reader.h"

namespace velmora::ctl {

// The trace log as text for people. Each record has its time and level; a CSTA message is summed up in a line, tells
// which request it answers, and follows as laid-out XML. Passwords are masked. Each line ends with LF.
class LogView {
public:
    // Shows records up to a level. brief leaves the XML out.
    LogView(int32_t highestLevel, bool brief) : level(highestLevel), withXml(!brief) {}

    // The next record; empty when it is above the level.
    ByteString Show(const LogRecord& record);

    // Every call of the records so far, those above the level included, and what became of it; empty without a call.
    ByteString Calls() const;

private:
    int32_t level;
    bool withXml;
    CallHistory history;
};

}  // namespace velmora::ctl
