#include "tools/velmoractl/interrupt.h"

#include <windows.h>

#include <atomic>

#include "tools/velmoractl/log_override.h"

namespace velmora::ctl {
namespace {

// Set by the console's handler, which runs on a thread of its own.
std::atomic<bool> interrupted = false;

BOOL WINAPI HandleEvent(DWORD event) {
    const bool polite = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    if (polite && !interrupted.exchange(true)) return TRUE;
    LogOverride::RestoreActive();
    return FALSE;  // the next handler ends the process
}

}  // namespace

void CatchInterrupts() {
    SetConsoleCtrlHandler(HandleEvent, TRUE);
}

bool Interrupted() {
    return interrupted;
}

}  // namespace velmora::ctl
