#include "benchmarks/job/floor_link.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <x86intrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "benchmarks/job/floor_log.h"
#include "benchmarks/job/floor_script.h"

namespace velmora {
namespace {

constexpr int kReceiveBytes = 1024;                // read from the socket at a time, as the provider does
constexpr size_t kBufferBytes = size_t{4} << 20U;  // more than a flood of the job has

const char* scriptFile = nullptr;
const FloorScript* script = nullptr;

SOCKET linkSocket = INVALID_SOCKET;
HANDLE dataSemaphore = nullptr;
HANDLE sessionThread = nullptr;
HANDLE receiveThread = nullptr;
volatile bool stopping = false;

// Guards what follows.
CRITICAL_SECTION lock;
char* buffer = nullptr;  // kBufferBytes; not part of the DLL, which the loader would fill with zeros
size_t heldBytes = 0;
uint32_t nextRequest = 0;
uint32_t flightsTaken = 0;  // of the server's two

void Spin(uint64_t ticks) {
    if (ticks == 0) return;
    const uint64_t start = __rdtsc();
    while (__rdtsc() - start < ticks) {
    }
}

void Play(const FloorRequest& request) {
    Spin(request.spinTicks);
    for (const FloorPiece& record : request.records) WriteRecord(scriptFile, record);
    send(linkSocket, scriptFile + request.wire.position, static_cast<int>(request.wire.bytes), 0);
}

// How many bytes at the start make the next message; 0 when they are not all there.
size_t WholeMessage(const char* bytes, size_t count) {
    if (count < script->headerBytes) return 0;
    const auto* length = reinterpret_cast<const unsigned char*>(bytes) + script->lengthPosition;
    const size_t named = length[0] * size_t{256} + length[1];
    const size_t whole = script->lengthCountsHeader != 0 ? named : named + script->headerBytes;
    return count < whole ? 0 : whole;
}

void TakeMessage(size_t bytes) {
    for (uint32_t index = 0; index < script->messageCount; ++index) {
        const FloorMessage& message = script->messages[index];
        if (message.wireBytes != bytes) continue;
        Spin(message.spinTicks);
        WriteRecord(scriptFile, message.record);
        if (message.isAnswered != 0) Play(script->requests[nextRequest++]);
        return;
    }
}

// The bytes taken; 0 when the flight is not whole.
size_t TakeFlight(size_t count) {
    const size_t flight = script->serverFlightBytes[flightsTaken];
    if (count < flight) return 0;
    if (flightsTaken++ == 0) {
        Play(script->clientFlights[1]);
    } else {
        Play(script->requests[nextRequest++]);
    }
    return flight;
}

void TakeReceived() {
    size_t taken = 0;
    for (size_t step = 1; step != 0; taken += step) {
        const size_t left = heldBytes - taken;
        if (script->serverFlightBytes[0] != 0 && flightsTaken < 2) {
            step = TakeFlight(left);
        } else {
            step = WholeMessage(buffer + taken, left);
            if (step != 0) TakeMessage(step);
        }
    }
    heldBytes -= taken;
    std::memmove(buffer, buffer + taken, heldBytes);
}

DWORD WINAPI RunSession(void* /*unused*/) {
    while (true) {
        WaitForSingleObject(dataSemaphore, INFINITE);
        if (stopping) return 0;
        EnterCriticalSection(&lock);
        TakeReceived();
        LeaveCriticalSection(&lock);
    }
}

DWORD WINAPI RunReceive(void* /*unused*/) {
    char chunk[kReceiveBytes];
    while (true) {
        const int count = recv(linkSocket, chunk, kReceiveBytes, 0);
        if (count <= 0) return 0;
        EnterCriticalSection(&lock);
        std::memcpy(buffer + heldBytes, chunk, static_cast<size_t>(count));
        heldBytes += static_cast<size_t>(count);
        LeaveCriticalSection(&lock);
        ReleaseSemaphore(dataSemaphore, 1, nullptr);
    }
}

void Connect(const char* address, const char* port) {
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo* found = nullptr;
    if (getaddrinfo(address, port, &hints, &found) != 0) return;
    linkSocket = socket(found->ai_family, SOCK_STREAM, IPPROTO_TCP);
    const BOOL on = TRUE;
    setsockopt(linkSocket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
    static_cast<void>(connect(linkSocket, found->ai_addr, static_cast<int>(found->ai_addrlen)));
    freeaddrinfo(found);
}

}  // namespace

void LoadScript(const char* path) {
    const HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    const HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    scriptFile = static_cast<const char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0));
    script = reinterpret_cast<const FloorScript*>(scriptFile);
    CloseHandle(mapping);
    CloseHandle(file);
    buffer = static_cast<char*>(VirtualAlloc(nullptr, kBufferBytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
}

void StartLink(const char* address, const char* port) {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    InitializeCriticalSection(&lock);
    dataSemaphore = CreateSemaphoreW(nullptr, 0, std::numeric_limits<LONG>::max(), nullptr);
    Connect(address, port);
    Play(script->serverFlightBytes[0] != 0 ? script->clientFlights[0] : script->requests[nextRequest++]);
    EnterCriticalSection(&lock);
    sessionThread = CreateThread(nullptr, 0, RunSession, nullptr, 0, nullptr);
    receiveThread = CreateThread(nullptr, 0, RunReceive, nullptr, 0, nullptr);
    LeaveCriticalSection(&lock);
}

void SendNextRequest() {
    EnterCriticalSection(&lock);
    Play(script->requests[nextRequest++]);
    LeaveCriticalSection(&lock);
}

void StopLink() {
    stopping = true;
    WSACleanup();
    closesocket(linkSocket);
    ReleaseSemaphore(dataSemaphore, 1, nullptr);
    WaitForSingleObject(sessionThread, INFINITE);
    WaitForSingleObject(receiveThread, INFINITE);
    CloseHandle(sessionThread);
    CloseHandle(receiveThread);
}

}  // namespace velmora
