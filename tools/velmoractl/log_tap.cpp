#include "tools/velmoractl/log_tap.h"

#include "config/text_numbers.h"

namespace velmora::ctl {
namespace {

constexpr char kPathStart[] = R"(\\.\pipe\velmoractl-log-)";
constexpr DWORD kPipeBytes = 1048576;

}  // namespace

LogTap::LogTap() : path(kPathStart + DecimalText(GetCurrentProcessId())) {
    // Written to by this process, read by this handle. The first instance or none: nobody else can be there before.
    pipe = CreateNamedPipeA(path.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_FIRST_PIPE_INSTANCE,
                            PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, 0,
                            kPipeBytes, 0, nullptr);
}

LogTap::~LogTap() {
    if (Open()) CloseHandle(pipe);
}

ByteString LogTap::Read() {
    ByteString bytes;
    DWORD waiting = 0;
    while (PeekNamedPipe(pipe, nullptr, 0, nullptr, &waiting, nullptr) != 0 && waiting > 0) {
        ByteString chunk(waiting, '\0');
        DWORD count = 0;
        if (ReadFile(pipe, chunk.data(), waiting, &count, nullptr) == 0) break;
        bytes.append(chunk, 0, count);
    }
    return bytes;
}

bool IsLogTapPath(const ByteString& path) {
    return path.starts_with(kPathStart);
}

}  // namespace velmora::ctl
