#include "tests/support/log_file_fake.h"

#include <cstdio>

#include "config/log_file.h"

namespace velmora {
namespace {

std::FILE* opened = nullptr;

}  // namespace

int logFileOpenings = 0;
ByteString logFilePath;

std::FILE* OpenLogFile(const ByteString& path) {
    ++logFileOpenings;
    logFilePath = path;
    if (path == "unwritable") return nullptr;
    opened = std::tmpfile();
    return opened;
}

ByteString WrittenLog() {
    if (opened == nullptr) return {};
    const long end = std::ftell(opened);
    std::rewind(opened);
    ByteString bytes;
    for (int byte = std::fgetc(opened); byte != EOF; byte = std::fgetc(opened)) bytes += static_cast<char>(byte);
    static_cast<void>(std::fseek(opened, end, SEEK_SET));
    return bytes;
}

}  // namespace velmora
