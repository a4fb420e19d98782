#include "tests/support/log_records.h"

#include <gtest/gtest.h>

#include <cctype>

namespace velmora {
namespace {

constexpr std::string_view kRecordEnd = "\r\n";

// Reads the head of a record, "[H:MM:SS:mmm]:LEVEL " with as many digits of hours as it takes, off the front of text.
// Leaves text alone and answers false when there is none.
bool TakeHead(std::string_view& text, LogRecord& record) {
    size_t position = 0;
    uint64_t number = 0;
    const auto takeCharacter = [&](char character) {
        if (position >= text.size() || text[position] != character) return false;
        ++position;
        return true;
    };
    const auto takeNumber = [&](size_t fewestDigits, size_t mostDigits) {
        size_t digits = 0;
        number = 0;
        while (position < text.size() && std::isdigit(static_cast<unsigned char>(text[position])) != 0) {
            number = number * 10 + static_cast<uint64_t>(text[position] - '0');
            ++position;
            ++digits;
        }
        return digits >= fewestDigits && digits <= mostDigits;
    };

    if (!takeCharacter('[') || !takeNumber(1, 9)) return false;
    record.elapsedMs = number * 3600000;
    if (!takeCharacter(':') || !takeNumber(2, 2) || number > 59) return false;
    record.elapsedMs += number * 60000;
    if (!takeCharacter(':') || !takeNumber(2, 2) || number > 59) return false;
    record.elapsedMs += number * 1000;
    if (!takeCharacter(':') || !takeNumber(3, 3)) return false;
    record.elapsedMs += number;
    if (!takeCharacter(']') || !takeCharacter(':')) return false;
    const bool negative = takeCharacter('-');
    if (!takeNumber(1, 9) || !takeCharacter(' ')) return false;
    record.level = negative ? -static_cast<int>(number) : static_cast<int>(number);
    text.remove_prefix(position);
    return true;
}

// Where the next record starts: at the first line end that has a head behind it; at the very end when there is none.
size_t FindNextRecord(std::string_view text) {
    LogRecord ignored;
    for (size_t end = text.find(kRecordEnd); end != std::string_view::npos; end = text.find(kRecordEnd, end + 1)) {
        std::string_view rest = text.substr(end + kRecordEnd.size());
        if (TakeHead(rest, ignored)) return end + kRecordEnd.size();
    }
    return text.size();
}

}  // namespace

std::vector<LogRecord> LogRecordsIn(std::string_view written) {
    std::vector<LogRecord> records;
    while (!written.empty()) {
        LogRecord record;
        if (!TakeHead(written, record)) {
            ADD_FAILURE() << "The log does not start with a record: " << written.substr(0, 80);
            break;
        }
        const size_t length = FindNextRecord(written);
        std::string_view text = written.substr(0, length);
        written.remove_prefix(length);
        if (!text.ends_with(kRecordEnd)) break;  // still being written
        text.remove_suffix(kRecordEnd.size());
        record.text = text;
        records.push_back(record);
    }
    return records;
}

}  // namespace velmora
