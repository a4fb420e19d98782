#include "tests/support/log_reader.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "tests/support/worker_thread.h"

namespace velmora {
namespace {

constexpr uint32_t kPollMs = 5;
constexpr std::string_view kRecordEnd = "\r\n";

// What was written before text mode put a CR in front of each LF.
std::string WithoutTextMode(const std::string& bytes) {
    std::string written;
    written.reserve(bytes.size());
    for (size_t index = 0; index < bytes.size(); ++index) {
        if (bytes[index] == '\r' && index + 1 < bytes.size() && bytes[index + 1] == '\n') continue;
        written += bytes[index];
    }
    return written;
}

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

LogReader::LogReader(std::string file) : path(std::move(file)) {
    DeleteFileA(path.c_str());
    EXPECT_FALSE(Exists());
}

bool LogReader::Exists() const {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

const std::string& LogReader::Bytes() {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return bytes;
    LARGE_INTEGER start;
    start.QuadPart = static_cast<LONGLONG>(bytes.size());
    SetFilePointerEx(file, start, nullptr, FILE_BEGIN);
    std::vector<char> chunk(65536);
    DWORD count = 0;
    while (ReadFile(file, chunk.data(), static_cast<DWORD>(chunk.size()), &count, nullptr) != 0 && count > 0) {
        bytes.append(chunk.data(), count);
    }
    CloseHandle(file);
    return bytes;
}

std::vector<LogRecord> LogReader::Records() {
    const std::string written = WithoutTextMode(Bytes());
    std::string_view rest = written;
    std::vector<LogRecord> records;
    while (!rest.empty()) {
        LogRecord record;
        if (!TakeHead(rest, record)) {
            ADD_FAILURE() << "The log does not start with a record: " << rest.substr(0, 80);
            break;
        }
        const size_t length = FindNextRecord(rest);
        std::string_view text = rest.substr(0, length);
        rest.remove_prefix(length);
        if (!text.ends_with(kRecordEnd)) break;  // still being written
        text.remove_suffix(kRecordEnd.size());
        record.text = text;
        records.push_back(record);
    }
    return records;
}

LogTexts LogReader::Texts(size_t first) {
    LogTexts texts;
    const std::vector<LogRecord> records = Records();
    for (size_t index = first; index < records.size(); ++index) texts.push_back(records[index].text);
    return texts;
}

LogTexts LogReader::TextsOfLevel(int level) {
    LogTexts texts;
    for (const LogRecord& record : Records()) {
        if (record.level == level) texts.push_back(record.text);
    }
    return texts;
}

bool LogReader::WaitUntil(const std::function<bool(const std::vector<LogRecord>&)>& condition) {
    const double deadline = PreciseMs() + kPatienceMs;
    while (!condition(Records())) {
        if (PreciseMs() > deadline) return false;
        Sleep(kPollMs);
    }
    return true;
}

bool LogReader::WaitForText(const std::string& text, size_t times) {
    return WaitUntil([&](const std::vector<LogRecord>& records) {
        const auto matches = [&](const LogRecord& record) { return record.text == text; };
        return static_cast<size_t>(std::count_if(records.begin(), records.end(), matches)) >= times;
    });
}

}  // namespace velmora
