#include "csta/session.h"

#include <winsock2.h>

#include <atomic>
#include <limits>
#include <stdexcept>

#include "config/clock.h"
#include "config/settings.h"
#include "config/settings_store.h"
#include "config/trace_log.h"
#include "csta/connection.h"
#include "csta/requests.h"

namespace velmora {
namespace {

constexpr DWORD kReadRetryMs = 1000;

// Written by StartSession and StopSession, while no thread of the session runs.
BindCallFunction bindCallFunction = nullptr;
HANDLE dataSemaphore = nullptr;  // released once for each chunk received, and once to stop
HANDLE sessionThread = nullptr;
HANDLE receiveThread = nullptr;

std::atomic<bool> stopping = false;

void CloseIfOpen(HANDLE& handle) {
    if (handle != nullptr) CloseHandle(handle);
    handle = nullptr;
}

// True when data has arrived (or the session stops), false when it is time to renew the session.
bool WaitForData() {
    const uint32_t remaining = connection.keepalive.RemainingMs(TickCount32());
    if (remaining != Keepalive::kForever && static_cast<int32_t>(remaining) <= 0) return false;
    return WaitForSingleObject(dataSemaphore, remaining) != WAIT_TIMEOUT;
}

void RenewSession() {
    connection.keepalive.Disarm();
    ResetApplicationSessionTimer(connection.keepalive.SessionId());
}

void ProcessFrame(const Frame& frame) {
    WriteLog(5, "CSTA Rx: ", frame.xml);
    try {
        Dispatch(frame.invokeId, frame.xml, bindCallFunction);
    } catch (const std::logic_error&) {
        // The PBX granted a duration that is no number: its message has no effect, and the session lives on.
    }
}

void ProcessReceived() {
    connection.TakeReceived();
    while (const std::optional<Frame> frame = connection.NextFrame()) ProcessFrame(*frame);
}

DWORD WINAPI RunSession(void* /*unused*/) {
    while (true) {
        const bool dataArrived = WaitForData();
        if (stopping) return 0;
        const CriticalSectionGuard guard(connection.lock);
        if (dataArrived) {
            ProcessReceived();
        } else {
            RenewSession();
        }
    }
}

// There is no reconnection: a link that is down is read again, every second, until the session stops.
DWORD WINAPI RunReceive(void* /*unused*/) {
    while (true) {
        if (connection.Receive()) {
            ReleaseSemaphore(dataSemaphore, 1, nullptr);
        } else if (stopping) {
            return 0;
        } else {
            Sleep(kReadRetryMs);
        }
    }
}

void WaitForEnd(HANDLE& thread) {
    if (thread != nullptr) WaitForSingleObject(thread, INFINITE);
    CloseIfOpen(thread);
}

}  // namespace

void StartSession(BindCallFunction bindCall) {
    bindCallFunction = bindCall;
    stopping = false;
    connection.StartWinsock();
    // An earlier session's semaphore may hold counts of its own.
    CloseIfOpen(dataSemaphore);
    dataSemaphore = CreateSemaphoreW(nullptr, 0, std::numeric_limits<LONG>::max(), nullptr);
    LoadSettings();
    connection.Connect();
    StartApplicationSession(settings.domain, settings.username, settings.password);

    const CriticalSectionGuard guard(connection.lock);
    sessionThread = CreateThread(nullptr, 0, RunSession, nullptr, 0, nullptr);
    receiveThread = CreateThread(nullptr, 0, RunReceive, nullptr, 0, nullptr);
}

void StopSession() {
    stopping = true;
    connection.Disconnect();
    ReleaseSemaphore(dataSemaphore, 1, nullptr);
    WaitForEnd(sessionThread);
    WaitForEnd(receiveThread);
}

}  // namespace velmora
