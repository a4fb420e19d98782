#include "benchmarks/job/floor_log.h"

#include <windows.h>

namespace velmora {
namespace {

char logPath[MAX_PATH];
bool logIsWritten = false;
HANDLE logFile = INVALID_HANDLE_VALUE;

}  // namespace

void SetLog(const char* path, bool isWritten) {
    lstrcpynA(logPath, path, MAX_PATH);
    logIsWritten = isWritten;
}

void WriteRecord(const char* script, const FloorPiece& record) {
    if (!logIsWritten || record.bytes == 0) return;
    if (logFile == INVALID_HANDLE_VALUE) {
        logFile = CreateFileA(logPath, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    DWORD written = 0;
    WriteFile(logFile, script + record.position, record.bytes, &written, nullptr);
}

}  // namespace velmora
