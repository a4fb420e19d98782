#include "tests/support/child_process.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

constexpr DWORD kDeadlineMs = 30000;
constexpr DWORD kPollMs = 5;
constexpr DWORD kPipeBytes = 65536;  // what the program may print before anybody reads it

ByteString OwnFolder() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const ByteString whole = path;
    return whole.substr(0, whole.rfind('\\') + 1);
}

}  // namespace

ChildProcess::ChildProcess(const ByteString& program, const ByteString& arguments, const ByteString& input) {
    job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits));

    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE printEnd = nullptr;
    CreatePipe(&output, &printEnd, &inherited, kPipeBytes);
    SetHandleInformation(output, HANDLE_FLAG_INHERIT, 0);

    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    CreatePipe(&readEnd, &writeEnd, &inherited, kPipeBytes);
    SetHandleInformation(writeEnd, HANDLE_FLAG_INHERIT, 0);
    DWORD written = 0;
    WriteFile(writeEnd, input.data(), static_cast<DWORD>(input.size()), &written, nullptr);
    CloseHandle(writeEnd);

    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = readEnd;
    startup.hStdOutput = printEnd;
    startup.hStdError = printEnd;
    PROCESS_INFORMATION started{};
    ByteString commandLine = "\"" + OwnFolder() + program + "\" " + arguments;
    if (CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr, nullptr,
                       &startup, &started) != 0) {
        process = started.hProcess;
        AssignProcessToJobObject(job, process);
        ResumeThread(started.hThread);
        CloseHandle(started.hThread);
    } else {
        ADD_FAILURE() << commandLine << ": Windows error " << GetLastError();
    }
    CloseHandle(readEnd);
    CloseHandle(printEnd);
}

ChildProcess::~ChildProcess() {
    if (process != nullptr) {
        TerminateProcess(process, 99);
        WaitForSingleObject(process, kDeadlineMs);
        CloseHandle(process);
    }
    CloseHandle(output);
    CloseHandle(job);
}

std::optional<ByteString> ChildProcess::ReadLine() {
    const ULONGLONG deadlineMs = GetTickCount64() + kDeadlineMs;
    while (true) {
        const size_t end = unread.find("\r\n");
        if (end != ByteString::npos) {
            const ByteString line = unread.substr(0, end);
            unread.erase(0, end + 2);
            return line;
        }
        DWORD count = 0;
        if (PeekNamedPipe(output, nullptr, 0, nullptr, &count, nullptr) == 0 || GetTickCount64() > deadlineMs)
            return {};
        if (count == 0) {
            Sleep(kPollMs);
            continue;
        }
        char bytes[1024];
        if (ReadFile(output, bytes, sizeof(bytes), &count, nullptr) == 0) return {};
        unread.append(bytes, count);
    }
}

ByteString ChildProcess::ReadLineWith(const ByteString& text) {
    while (const std::optional<ByteString> line = ReadLine()) {
        if (line->find(text) != ByteString::npos) return *line;
    }
    return {};
}

std::optional<DWORD> ChildProcess::ExitCode() {
    DWORD exitCode = 0;
    if (WaitForSingleObject(process, kDeadlineMs) != WAIT_OBJECT_0) return {};
    if (GetExitCodeProcess(process, &exitCode) == 0) return {};
    return exitCode;
}

}  // namespace velmora
