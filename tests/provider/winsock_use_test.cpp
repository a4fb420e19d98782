#include <ws2tcpip.h>

#include <atomic>

#include "tests/provider/provider_test.h"
#include "tests/support/csta_answers.h"
#include "tests/support/import_hook.h"

namespace velmora {
namespace {

// The provider's calls of Winsock, seen by functions in the place of its imports.

std::atomic<int> startups = 0;
std::atomic<WORD> requestedVersion = 0;
std::atomic<WORD> grantedVersion = MAKEWORD(2, 2);
std::atomic<int> cleanups = 0;
std::atomic<int> cleanupsAtClose = 0;  // how many came before the latest closesocket
std::atomic<int> closings = 0;
std::atomic<int> connects = 0;
std::atomic<int> reads = 0;
std::atomic<int> readBytes = 0;  // what the latest read asks for
addrinfo* addresses = nullptr;   // what a name resolves to

int WSAAPI CountingStartup(WORD version, WSADATA* data) {
    ++startups;
    requestedVersion = version;
    const int result = WSAStartup(version, data);
    data->wVersion = grantedVersion;
    return result;
}

int WSAAPI CountingCleanup() {
    ++cleanups;
    return WSACleanup();
}

int WSAAPI CountingClose(SOCKET socket) {
    ++closings;
    cleanupsAtClose = cleanups.load();
    return closesocket(socket);
}

int WSAAPI CountingConnect(SOCKET socket, const sockaddr* name, int nameBytes) {
    ++connects;
    return connect(socket, name, nameBytes);
}

int WSAAPI CountingReceive(SOCKET socket, char* buffer, int bufferBytes, int flags) {
    ++reads;
    readBytes = bufferBytes;
    return recv(socket, buffer, bufferBytes, flags);
}

int WSAAPI GivenAddresses(const char* /*name*/, const char* /*service*/, const addrinfo* /*hints*/, addrinfo** result) {
    *result = addresses;
    return 0;
}

void WSAAPI KeepAddresses(addrinfo* /*list*/) {}

class WinsockUseTest : public ProviderTest {
protected:
    WinsockUseTest() {
        Hook("WSAStartup", CountingStartup);
        Hook("WSACleanup", CountingCleanup);
        Hook("closesocket", CountingClose);
        Hook("connect", CountingConnect);
        Hook("recv", CountingReceive);
    }

    template <typename Function>
    void Hook(const char* name, Function* function) {
        HookImport(provider.module, "ws2_32.dll", name, function);
    }

    // A list of addresses in the place of what a resolver would give: the loopback at each of these ports. Port 0 is
    // for one of another family than IPv4 and IPv6.
    void ResolveTo(std::initializer_list<uint16_t> ports) {
        entries.resize(ports.size());
        names.resize(ports.size());
        size_t index = 0;
        for (const uint16_t port : ports) {
            names[index].sin_family = AF_INET;
            names[index].sin_port = htons(port);
            names[index].sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            entries[index].ai_family = port == 0 ? AF_IPX : AF_INET;
            entries[index].ai_socktype = SOCK_STREAM;
            entries[index].ai_addr = reinterpret_cast<sockaddr*>(&names[index]);
            entries[index].ai_addrlen = sizeof names[index];
            entries[index].ai_next = index + 1 < ports.size() ? &entries[index + 1] : nullptr;
            ++index;
        }
        addresses = entries.data();
        Hook("getaddrinfo", GivenAddresses);
        Hook("freeaddrinfo", KeepAddresses);
    }

    std::vector<addrinfo> entries;
    std::vector<sockaddr_in> names;
};

TEST_F(WinsockUseTest, StartsWinsockOnceInAProcessAndEndsItWithEverySession) {
    for (int sessions = 1; sessions <= 3; ++sessions) {
        LogIn();
        Stop();
        EXPECT_EQ(startups, 1);
        EXPECT_EQ(cleanups, sessions);
    }
    EXPECT_EQ(requestedVersion, MAKEWORD(2, 2));
}

TEST_F(WinsockUseTest, EndsWinsockBeforeItClosesTheSocket) {
    LogIn();
    EXPECT_EQ(closings, 0);
    Stop();
    EXPECT_EQ(closings, 1);
    EXPECT_EQ(cleanupsAtClose, 1);
}

TEST_F(WinsockUseTest, GivesAnotherVersionThan22BackAndCarriesOn) {
    grantedVersion = MAKEWORD(2, 1);
    LogIn();
    EXPECT_EQ(cleanups, 1);
}

TEST_F(WinsockUseTest, ReadsUpTo1024BytesAtATime) {
    LogIn();
    EXPECT_EQ(readBytes, 1024);
    SendAndWait(0, std::string(5000, ' '));
    EXPECT_EQ(readBytes, 1024);
}

TEST_F(WinsockUseTest, ReadsAgainASecondAfterAFailedReadAndNeverReconnects) {
    LogIn();
    pbx.Close();
    const int before = reads;
    EXPECT_FALSE(pbx.WaitForConnections(2, 1500));
    EXPECT_GE(reads, before + 1);
    EXPECT_LE(reads, before + 2);
    MakeCall(L"123");
    EXPECT_EQ(connects, 1);
    Stop();
}

TEST_F(WinsockUseTest, TriesOnlyTheFirstIpAddress) {
    PbxPeer deaf;
    deaf.StopListening();
    ResolveTo({0, deaf.Port(), pbx.Port()});
    Init();
    EXPECT_EQ(connects, 1);
    EXPECT_EQ(closings, 1);
    EXPECT_EQ(log.TextsOfLevel(1), (LogTexts{"Connection establishment to \"127.0.0.1\" failed"}));
    Stop();
}

TEST_F(WinsockUseTest, PassesOverAddressesOfOtherFamilies) {
    ResolveTo({0, 0, pbx.Port()});
    LogIn();
    EXPECT_EQ(connects, 1);
}

}  // namespace
}  // namespace velmora
