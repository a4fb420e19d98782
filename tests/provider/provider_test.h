#pragma once

#include <gtest/gtest.h>

// Winsock's header comes before windows.h.
#include "tests/support/pbx_peer.h"
// and what builds on windows.h behind it
#include "tests/support/log_reader.h"
#include "tests/support/provider_host.h"
#include "tests/support/registry_scope.h"
#include "tests/support/worker_thread.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

// What the tests hand over as TAPI would.
inline constexpr DWORD kProviderId = 0x12345;
inline constexpr DWORD kLineDeviceIdBase = 5;
inline constexpr DWORD kPhoneDeviceIdBase = 7;
inline constexpr DRV_REQUESTID kRequestId = 0x4711;

// What the tests store as the user's account.
inline constexpr char kUsername[] = "40";
inline constexpr char kPassword[] = "secret";
inline constexpr char kDomain[] = "pbx.example";
inline constexpr char kDevice[] = "40@pbx.example";

// A shutdown takes no longer than this, whatever the PBX does: the receive thread may first have to wake from the
// second that it sleeps after a failed read.
inline constexpr uint32_t kStopMs = 2000;

// Stores the settings that the tests start from: the account above, the PBX at a port of the loopback without
// encryption, a log at level 5 without a noticeable limit, and a GUID.
void StoreSettings(RegistryScope& registry, const LogReader& log, uint16_t port);

// The provider in a process of its own, with a registry key, a trace log and a PBX that answers nothing by itself.
//
// A test changes the settings before it calls Init.
class ProviderTest : public testing::Test {
protected:
    ProviderTest();

    // Shuts the provider down if the test has left it running. TAPI's callbacks must not have been called.
    ~ProviderTest() override;

    RegistryScope registry;
    LogReader log;
    PbxPeer pbx;
    const uint64_t beforeLoadMs = GetTickCount64();
    ProviderHost provider;

    // Initialises the provider; it returns 0 by contract.
    void Init(DWORD providerId = kProviderId, DWORD lineDeviceIdBase = kLineDeviceIdBase);

    // Shuts it down; it returns 0, and in time.
    void Stop(uint32_t withinMs = kStopMs);

    // Initialises the provider and has the PBX accept its login for half an hour. Returns when the PBX has got the
    // MonitorStart, the second frame of the session.
    void LogIn();

    // Sends a frame and waits until the provider has worked off everything up to it.
    void SendAndWait(uint32_t invokeId, const std::string& xml);

    // Waits until the provider has worked off everything that the PBX has sent so far: sends one more accepted login
    // and waits for its MonitorStart.
    void WaitUntilDispatched();

    // How many MonitorStart requests the PBX has got.
    size_t MonitorStarts();

    // Places a call; it returns the request ID and a handle.
    HDRVCALL MakeCall(const std::wstring& number, DWORD countryCode = 0) const;

    // The invoke ID of the MakeCall for this number, once the PBX has got it.
    uint32_t WaitForMakeCall(const std::string& number);

    // Closes a call, which returns 0, and gives the ClearConnection that the PBX gets for it.
    std::string CloseCall(HDRVCALL call);

    // Logs in with an account so long that each MonitorStart and MakeCall takes some 30 KB, has the PBX stop reading,
    // and lets the session thread send MonitorStarts until it gets no further.
    void FillTheLink();

    // Has the usual account log in at another PBX, in a session of its own.
    void RunSessionAt(PbxPeer& next);

    // The texts that an action has left in the log.
    LogTexts Recorded(const std::function<void()>& action);

    bool running = false;
};

// A username, its PBX's answer and so on are bytes; this is their text in UTF-16, for digits and ASCII.
std::wstring Wide(const std::string& text);

}  // namespace velmora
