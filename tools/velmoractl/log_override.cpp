#include "tools/velmoractl/log_override.h"

#include <atomic>

#include "config/registry.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/log_tap.h"

namespace velmora::ctl {
namespace {

constexpr char kParentPath[] = R"(SOFTWARE\velmora)";
constexpr char kTurnName[] = R"(Global\velmoractl-log-override)";
constexpr DWORD kTurnMs = 60000;  // a start of the provider takes at most some 20 s, the time-out of a connection

constexpr char kLogLength[] = "2147483647";  // the highest that the provider reads

// The override to restore when the console ends the process.
std::atomic<LogOverride*> activeOverride = nullptr;

bool KeyExists(const char* path) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

// Waits until no other velmoractl has the log's settings in its hands; false when one still has them.
bool TakeTurn(HANDLE turn) {
    if (turn == nullptr) return false;
    if (WaitForSingleObject(turn, 0) != WAIT_TIMEOUT) return true;
    PrintErrorLine("Another velmoractl reads the trace log; this one waits for it, a minute at most.");
    return WaitForSingleObject(turn, kTurnMs) != WAIT_TIMEOUT;
}

}  // namespace

LogOverride::LogOverride(const ByteString& logfile, const ByteString& loglevel)
    : turn(CreateMutexA(nullptr, FALSE, kTurnName)) {
    const bool alone = TakeTurn(turn);
    if (!OpenKey()) return;
    for (const char* name : {"logfile", "loglevel", "loglength"}) Remember(name);
    // Left behind by a process that could not restore it: what was there before is not known.
    if (alone && IsLogTapPath(former.front().bytes)) {
        for (Former& value : former) value.present = false;
    }
    active = true;
    activeOverride = this;
    if (!Store("logfile", logfile) || !Store("loglevel", loglevel) || !Store("loglength", kLogLength)) RestoreActive();
}

LogOverride::~LogOverride() {
    RestoreActive();
    if (turn != nullptr) {
        ReleaseMutex(turn);
        CloseHandle(turn);
    }
}

void LogOverride::RestoreActive() {
    // Whoever takes it out restores it, the destructor or the console's handler.
    LogOverride* override = activeOverride.exchange(nullptr);
    if (override != nullptr) override->Restore();
}

bool LogOverride::OpenKey() {
    parentCreated = !KeyExists(kParentPath);
    DWORD disposition = 0;
    char keyClass[] = "velmora";
    const LSTATUS opened = RegCreateKeyExA(HKEY_LOCAL_MACHINE, kRegistryPath, 0, keyClass, REG_OPTION_NON_VOLATILE,
                                           KEY_QUERY_VALUE | KEY_SET_VALUE, nullptr, &key, &disposition);
    keyCreated = opened == ERROR_SUCCESS && disposition == REG_CREATED_NEW_KEY;
    return opened == ERROR_SUCCESS;
}

void LogOverride::Remember(const char* name) {
    Former value{name, false, REG_NONE, {}};
    DWORD length = 0;
    value.present = RegQueryValueExA(key, name, nullptr, &value.type, nullptr, &length) == ERROR_SUCCESS;
    if (value.present) {
        value.bytes.resize(length);
        RegQueryValueExA(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(value.bytes.data()), &length);
    }
    former.push_back(value);
}

bool LogOverride::Store(const char* name, const ByteString& text) const {
    const BYTE* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return RegSetValueExA(key, name, 0, REG_SZ, bytes, static_cast<DWORD>(text.size() + 1)) == ERROR_SUCCESS;
}

void LogOverride::Restore() {
    active = false;
    for (const Former& value : former) RestoreValue(value);
    DWORD valuesLeft = 1;
    RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &valuesLeft, nullptr, nullptr, nullptr,
                     nullptr);
    RegCloseKey(key);
    key = nullptr;
    // Keys that were not there before go again, unless somebody has stored settings meanwhile.
    if (keyCreated && valuesLeft == 0) RegDeleteKeyA(HKEY_LOCAL_MACHINE, kRegistryPath);
    if (parentCreated) RegDeleteKeyA(HKEY_LOCAL_MACHINE, kParentPath);
}

void LogOverride::RestoreValue(const Former& value) const {
    if (value.present) {
        RegSetValueExA(key, value.name, 0, value.type, reinterpret_cast<const BYTE*>(value.bytes.data()),
                       static_cast<DWORD>(value.bytes.size()));
    } else {
        RegDeleteValueA(key, value.name);
    }
}

}  // namespace velmora::ctl
