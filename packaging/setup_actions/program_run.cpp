#include "packaging/setup_actions/program_run.h"

#include <windows.h>

namespace velmora::setup {
namespace {

constexpr DWORD kDeadlineMs = 60'000;

// A temporary file that a program can print to; it goes when its last handle is closed. A pipe would have to be read
// while the deadline is watched.
HANDLE CreateOutputFile() {
    char folder[MAX_PATH + 1];
    char path[MAX_PATH + 1];
    if (GetTempPathA(sizeof folder, folder) == 0) return INVALID_HANDLE_VALUE;
    if (GetTempFileNameA(folder, "vlm", 0, path) == 0) return INVALID_HANDLE_VALUE;
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    return CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                       &inheritable, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
}

ByteString ReadFromStart(HANDLE file) {
    ByteString text;
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    char bytes[1024];
    DWORD read = 0;
    while (ReadFile(file, bytes, sizeof bytes, &read, nullptr) != 0 && read > 0) text.append(bytes, read);
    return text;
}

// The program's exit code. The program is over then.
DWORD AwaitEnd(HANDLE process) {
    if (WaitForSingleObject(process, kDeadlineMs) != WAIT_OBJECT_0) {
        TerminateProcess(process, STILL_ACTIVE);
        WaitForSingleObject(process, kDeadlineMs);
    }
    DWORD exitCode = 0;
    GetExitCodeProcess(process, &exitCode);
    return exitCode;
}

}  // namespace

ProgramRun RunProgram(const ByteString& path, const ByteString& arguments) {
    ProgramRun run;
    const HANDLE output = CreateOutputFile();
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = nullptr;
    startup.hStdOutput = output;
    startup.hStdError = output;
    PROCESS_INFORMATION process = {};
    ByteString commandLine = "\"" + path + "\" " + arguments;
    run.started = CreateProcessA(path.c_str(), commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                                 nullptr, &startup, &process) != 0;
    if (run.started) {
        run.exitCode = AwaitEnd(process.hProcess);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        run.output = ReadFromStart(output);
    } else {
        run.exitCode = GetLastError();
    }
    CloseHandle(output);
    return run;
}

}  // namespace velmora::setup
