#include "tools/velmoractl/log_tap.h"

#include <sddl.h>

#include "config/text_numbers.h"

namespace velmora::ctl {
namespace {

constexpr char kPathStart[] = R"(\\.\pipe\velmoractl-log-)";
constexpr DWORD kPipeBytes = 1048576;

// The service writes under an account of its own (NETWORK SERVICE), which the system's default for pipes lets only
// read. It gets the rights of GENERIC_WRITE and FILE_READ_ATTRIBUTES; whoever made the pipe (OW, the owner) has them
// all.
constexpr char kAccessList[] = "D:(A;;0x120196;;;NS)(A;;0x120196;;;SY)(A;;FA;;;OW)";

}  // namespace

LogTap::LogTap() : path(kPathStart + DecimalText(GetCurrentProcessId())) {
    Create();
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

bool LogTap::WriterLeft() const {
    return PeekNamedPipe(pipe, nullptr, 0, nullptr, nullptr, nullptr) == 0 && GetLastError() == ERROR_BROKEN_PIPE;
}

void LogTap::Reopen() {
    if (Open()) CloseHandle(pipe);
    Create();
}

void LogTap::Create() {
    SECURITY_ATTRIBUTES security{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
    ConvertStringSecurityDescriptorToSecurityDescriptorA(kAccessList, SDDL_REVISION_1, &security.lpSecurityDescriptor,
                                                         nullptr);
    // Written to by the provider, read by this handle. The first instance or none: nobody else can be there before.
    pipe = CreateNamedPipeA(path.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_FIRST_PIPE_INSTANCE,
                            PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, 0,
                            kPipeBytes, 0, &security);
    LocalFree(security.lpSecurityDescriptor);
}

bool IsLogTapPath(const ByteString& path) {
    return path.starts_with(kPathStart);
}

}  // namespace velmora::ctl
