#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

struct LogRecord {
    uint64_t elapsedMs = 0;  // since the provider was loaded
    int level = 0;
    std::string text;  // as it was handed to the log
};

// The records of the trace log, each of which ends in "\r\n", from what was written to its file. One at the end that is
// not whole yet is left out. The test fails when anything else is there.
std::vector<LogRecord> LogRecordsIn(std::string_view written);

}  // namespace velmora
