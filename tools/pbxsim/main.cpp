#include <windows.h>

#include <cstdio>

#include "tools/pbxsim/options.h"
#include "tools/pbxsim/server.h"

namespace velmora::pbxsim {
namespace {

enum ExitCode { kFine = 0, kFailed = 1, kWrongUsage = 2 };

HANDLE stop = nullptr;  // set once, by Ctrl+C, which Windows reports on a thread of its own

BOOL WINAPI OnConsoleControl(DWORD control) {
    if (control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT) return FALSE;
    SetEvent(stop);
    return TRUE;
}

int Run(const std::vector<ByteString>& arguments) {
    const CommandLine commandLine = ParseCommandLine(arguments);
    if (!commandLine.fault.empty()) {
        static_cast<void>(
            std::fprintf(stderr, "pbxsim: %s; \"pbxsim --help\" lists the options\n", commandLine.fault.c_str()));
        return kWrongUsage;
    }
    const Options& options = commandLine.options;
    if (options.help || options.version) {
        static_cast<void>(std::fputs((options.help ? HelpText() : VersionText()).c_str(), stdout));
        return kFine;
    }
    stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetConsoleCtrlHandler(OnConsoleControl, TRUE);
    return Serve(options, stop) ? kFine : kFailed;
}

}  // namespace
}  // namespace velmora::pbxsim

int main(int argc, char** argv) {
    return velmora::pbxsim::Run({argv + 1, argv + argc});
}
