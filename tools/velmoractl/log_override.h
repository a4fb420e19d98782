#pragma once

#include <windows.h>

#include <vector>

#include "config/byte_string.h"

namespace velmora::ctl {

// Switches the trace log on for one start of the provider: stores the registry values logfile, loglevel and loglength,
// which the provider reads once in TSPI_providerInit, and restores the former ones, or their absence, at the end.
//
// Only one process at a time does this; another waits for its turn, a minute at most. The former values are also
// restored when the process is ended from its console. After an end that nothing can catch, logfile names a pipe that
// is gone: the next override finds that and removes the three values, and the defaults (no log) apply.
class LogOverride {
public:
    // Records above the level are not written; 5 takes in every entry point and every CSTA message.
    explicit LogOverride(const ByteString& logfile, const ByteString& loglevel = "5");
    ~LogOverride();
    LogOverride(const LogOverride&) = delete;
    LogOverride& operator=(const LogOverride&) = delete;

    // False when this process may not write to the registry; nothing has been changed then.
    bool Active() const { return active; }

    // Restores the override that is active in this process, if there is one. For the handler of console events.
    static void RestoreActive();

private:
    struct Former {
        const char* name;
        bool present = false;
        DWORD type = REG_NONE;
        ByteString bytes;
    };

    bool OpenKey();
    void Remember(const char* name);
    bool Store(const char* name, const ByteString& text) const;
    void Restore();
    void RestoreValue(const Former& value) const;

    HANDLE turn = nullptr;
    HKEY key = nullptr;
    bool parentCreated = false;  // HKEY_LOCAL_MACHINE\SOFTWARE\velmora was not there before
    bool keyCreated = false;     // the key below it was not there before
    bool active = false;
    std::vector<Former> former;
};

}  // namespace velmora::ctl
