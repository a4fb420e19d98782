#pragma once

#include <windows.h>

// GoogleTest's one-shot event on the Win32 API, for a compiler whose library has no std::mutex. GoogleTest skips its
// own when GTEST_HAS_NOTIFICATION_ is set.
namespace testing::internal {

class Notification {
public:
    Notification() : event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    ~Notification() { CloseHandle(event); }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    void Notify() { SetEvent(event); }
    void WaitForNotification() { WaitForSingleObject(event, INFINITE); }

private:
    HANDLE event;
};

}  // namespace testing::internal
