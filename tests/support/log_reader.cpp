#include "tests/support/log_reader.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <utility>

#include "tests/support/worker_thread.h"

namespace velmora {
namespace {

constexpr uint32_t kPollMs = 5;

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
    return LogRecordsIn(WithoutTextMode(Bytes()));
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
