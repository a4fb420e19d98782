#pragma once

#include <windows.h>

#include <vector>

#include "config/byte_string.h"

namespace velmora::ctl {

// What a PC with telephony has and Wine has not, for the time of one test each: gone at the end.

// A fake tapi32.dll in System32, in the place of the system's own, whose functions are stubs under Wine.
class FakeTapi {
public:
    FakeTapi();
    ~FakeTapi();
    FakeTapi(const FakeTapi&) = delete;
    FakeTapi& operator=(const FakeTapi&) = delete;

    // What it returns from now on, in hexadecimal.
    void Order(const char* result);

    // The calls that were made, a line each.
    std::vector<ByteString> Calls() const;

private:
    ByteString callsPath;
};

// The telephony service's list of providers in the registry.
class ProviderListScope {
public:
    // Lists files; the one at index n gets the ID 10 + n.
    explicit ProviderListScope(const std::vector<ByteString>& files);
    ~ProviderListScope();
    ProviderListScope(const ProviderListScope&) = delete;
    ProviderListScope& operator=(const ProviderListScope&) = delete;
};

// A telephony service that does not run, with a start type of winsvc.h.
class ServiceScope {
public:
    explicit ServiceScope(DWORD startType);
    ~ServiceScope();
    ServiceScope(const ServiceScope&) = delete;
    ServiceScope& operator=(const ServiceScope&) = delete;

private:
    SC_HANDLE manager;
    SC_HANDLE service;
};

// velmora.tsp in System32: a copy of a file beside the test program. Without a file there is none at the start either.
class SystemFileScope {
public:
    explicit SystemFileScope(const char* copyOf = nullptr);
    ~SystemFileScope();
    SystemFileScope(const SystemFileScope&) = delete;
    SystemFileScope& operator=(const SystemFileScope&) = delete;
};

ByteString SystemProviderPath();  // of velmora.tsp in System32

}  // namespace velmora::ctl
