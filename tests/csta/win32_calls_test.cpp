#include <gtest/gtest.h>

// Winsock's header comes before windows.h.
#include <winsock2.h>
#include <ws2tcpip.h>
// and what builds on windows.h behind it
#include "csta/critical_section.h"

#include <functional>
#include <string>

#include "tests/support/worker_thread.h"

namespace velmora {
namespace {

// What the link and its session rely on when they call Windows: held against Windows' own calls, and against those that
// stand in for them on Linux.

// A call that is to wait is taken to do so when it has not ended by then.
constexpr uint32_t kWaitsMs = 50;

// Two sockets of the loopback, connected to each other.
class ConnectedSocketsTest : public testing::Test {
protected:
    ConnectedSocketsTest() {
        WSADATA data;
        EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
        EXPECT_EQ(data.wVersion, MAKEWORD(2, 2));
        const SOCKET listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in name = {};
        name.sin_family = AF_INET;
        name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        int nameBytes = sizeof name;
        auto* address = reinterpret_cast<sockaddr*>(&name);
        EXPECT_EQ(bind(listener, address, nameBytes), 0);
        EXPECT_EQ(getsockname(listener, address, &nameBytes), 0);
        EXPECT_EQ(listen(listener, 1), 0);
        ours = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        EXPECT_EQ(connect(ours, address, nameBytes), 0);
        theirs = accept(listener, nullptr, nullptr);
        closesocket(listener);
    }

    ~ConnectedSocketsTest() override {
        closesocket(ours);
        closesocket(theirs);
        WSACleanup();
    }

    // What select says of ours: how many can be read.
    int Readable(SOCKET asked) const {
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(asked, &readable);
        timeval wait = {0, kWaitsMs * 1000};
        return select(0, &readable, nullptr, nullptr, &wait);
    }

    // Has a recv wait in ours, and expects that it ends, with no bytes, when the call is made.
    void ExpectEndsReceive(const std::function<void()>& call) {
        int count = 1;
        WorkerThread receiving([&] {
            char byte = 0;
            count = recv(ours, &byte, 1, 0);
        });
        EXPECT_FALSE(receiving.EndsWithin(kWaitsMs));
        call();
        EXPECT_TRUE(receiving.EndsWithin(kPatienceMs));
        EXPECT_LE(count, 0);
    }

    SOCKET ours = INVALID_SOCKET;
    SOCKET theirs = INVALID_SOCKET;
};

TEST_F(ConnectedSocketsTest, CarryBytes) {
    EXPECT_EQ(Readable(ours), 0);
    EXPECT_EQ(send(theirs, "bytes", 5, 0), 5);
    EXPECT_EQ(Readable(ours), 1);
    char bytes[8] = {};
    EXPECT_EQ(recv(ours, bytes, int{sizeof bytes}, 0), 5);
    EXPECT_EQ(std::string(bytes), "bytes");
}

TEST_F(ConnectedSocketsTest, EndAWaitingReceiveWhenTheyAreClosed) {
    ExpectEndsReceive([&] { closesocket(ours); });
}

TEST_F(ConnectedSocketsTest, EndAWaitingReceiveWhenWinsockEnds) {
    ExpectEndsReceive([] { EXPECT_EQ(WSACleanup(), 0); });
}

TEST_F(ConnectedSocketsTest, LiveAsLongAsWinsockIsInUse) {
    WSADATA data;
    EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
    EXPECT_EQ(WSACleanup(), 0);
    EXPECT_EQ(send(theirs, "b", 1, 0), 1);
}

TEST_F(ConnectedSocketsTest, EndAWaitingReceiveWhenTheOtherEndGoes) {
    ExpectEndsReceive([&] { closesocket(theirs); });
}

TEST_F(ConnectedSocketsTest, EndAWaitingSendWhenItIsCancelled) {
    const std::string more(64 * 1024 * 1024, 'x');
    int count = 1;
    WorkerThread sending([&] { count = send(ours, more.data(), static_cast<int>(more.size()), 0); });
    EXPECT_FALSE(sending.EndsWithin(kWaitsMs));
    const double deadline = PreciseMs() + kPatienceMs;
    while (!sending.EndsWithin(1) && PreciseMs() < deadline) CancelIoEx(reinterpret_cast<HANDLE>(ours), nullptr);
    EXPECT_LT(count, static_cast<int>(more.size()));
}

// Nothing but an error comes of it: no signal, no end of the process.
TEST_F(ConnectedSocketsTest, FailSendsWhenTheOtherEndHasGone) {
    closesocket(theirs);
    const double deadline = PreciseMs() + kPatienceMs;
    int sent = 1;
    while (sent == 1 && PreciseMs() < deadline) sent = send(ours, "b", 1, 0);
    EXPECT_EQ(sent, SOCKET_ERROR);
}

TEST_F(ConnectedSocketsTest, FailEveryCallOnceTheyAreClosed) {
    EXPECT_EQ(closesocket(ours), 0);
    for (const SOCKET none : {ours, INVALID_SOCKET}) {
        char byte = 0;
        EXPECT_EQ(recv(none, &byte, 1, 0), SOCKET_ERROR);
        EXPECT_EQ(send(none, &byte, 1, 0), SOCKET_ERROR);
        EXPECT_EQ(closesocket(none), SOCKET_ERROR);
        EXPECT_EQ(Readable(none), SOCKET_ERROR);
    }
}

TEST(CriticalSections, AreEnteredAgainByTheirHolderAlone) {
    CriticalSection section;
    const auto isFreeElsewhere = [&] {
        bool isFree = false;
        {
            WorkerThread asking([&] { isFree = section.IsFree(); });
        }
        return isFree;
    };
    {
        const CriticalSectionGuard outer(section);
        { const CriticalSectionGuard inner(section); }
        EXPECT_TRUE(section.IsFree());
        EXPECT_FALSE(isFreeElsewhere());
    }
    EXPECT_TRUE(isFreeElsewhere());
}

TEST(Semaphores, LetAsManyWaitsThroughAsTheyWereReleased) {
    const HANDLE semaphore = CreateSemaphoreW(nullptr, 1, 0x7FFFFFFF, nullptr);
    EXPECT_NE(ReleaseSemaphore(semaphore, 2, nullptr), 0);
    for (int count = 0; count < 3; ++count) EXPECT_EQ(WaitForSingleObject(semaphore, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    const double before = PreciseMs();
    EXPECT_EQ(WaitForSingleObject(semaphore, kWaitsMs), static_cast<DWORD>(WAIT_TIMEOUT));
    // The clock of the wait is coarser than the other.
    EXPECT_GE(PreciseMs() - before, kWaitsMs / 2);
    EXPECT_NE(CloseHandle(semaphore), 0);
}

TEST(Semaphores, FailWithoutAHandle) {
    EXPECT_EQ(ReleaseSemaphore(nullptr, 1, nullptr), 0);
    EXPECT_EQ(WaitForSingleObject(nullptr, 0), WAIT_FAILED);
    EXPECT_EQ(CloseHandle(nullptr), 0);
}

DWORD WINAPI WaitForTheSemaphore(void* semaphore) {
    return WaitForSingleObject(semaphore, INFINITE);
}

TEST(Threads, AreSignalledOnceTheyHaveEndedAndStaySo) {
    const HANDLE semaphore = CreateSemaphoreW(nullptr, 0, 0x7FFFFFFF, nullptr);
    const HANDLE thread = CreateThread(nullptr, 0, WaitForTheSemaphore, semaphore, 0, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_NE(ReleaseSemaphore(semaphore, 1, nullptr), 0);
    EXPECT_EQ(WaitForSingleObject(thread, kPatienceMs), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
    EXPECT_NE(CloseHandle(thread), 0);
    EXPECT_NE(CloseHandle(semaphore), 0);
}

}  // namespace
}  // namespace velmora
