#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/log_records.h"

namespace velmora {

using LogTexts = std::vector<std::string>;

// The trace log's file, read while the provider writes it.
//
// The provider writes in text mode: each "\n" reaches the disk as CR LF. A record, which ends in "\r\n", so ends in
// CR CR LF there, and so does each line of a CSTA message inside one.
class LogReader {
public:
    // The file need not exist yet; one left by an earlier test is removed.
    explicit LogReader(std::string path);

    const std::string& Path() const { return path; }
    bool Exists() const;

    // The file's bytes, as they are on the disk; empty when there is none.
    const std::string& Bytes();

    // The records written so far. The test fails when the file holds anything else.
    std::vector<LogRecord> Records();

    // Their texts, from the index-th on.
    LogTexts Texts(size_t first = 0);
    LogTexts TextsOfLevel(int level);

    // Waits until the records satisfy a condition; whether they did before patience ran out.
    bool WaitUntil(const std::function<bool(const std::vector<LogRecord>&)>& condition);

    // Waits until a text has been recorded this often.
    bool WaitForText(const std::string& text, size_t times = 1);

private:
    std::string path;
    std::string bytes;  // read so far; the file only grows
};

}  // namespace velmora
