#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "csta/pbx_socket.h"
#include "tools/velmoractl/check_report.h"
#include "tools/velmoractl/check_steps.h"
#include "tools/velmoractl/pbx_exchange.h"

namespace velmora::ctl {

// Goes the provider's way to the PBX step by step, with the provider's own link (csta/connection.h), its requests and
// its answers to what the PBX sends, in one thread. Nothing is written: neither a setting nor a log record.
//
// One check in the life of the process: the link is the one that the process has.
class PbxCheck {
public:
    using ShowStep = std::function<void(const CheckStep&)>;

    // digits is the number to call; none when it is empty. Each answer is waited for that long; a connection takes as
    // long as Windows tries. Each step is shown as soon as it is done.
    PbxCheck(const ByteString& digits, uint32_t timeoutSeconds, ShowStep showStep);

    const CheckReport& Run();

private:
    void Try(const ByteString& name, const std::function<CheckStep()>& step);

    CheckStep CheckSettings();
    CheckStep ResolveAddress();
    CheckStep Connect();
    CheckStep Encrypt();
    CheckStep LogIn();
    CheckStep AwaitMonitoring();
    CheckStep PlaceCall();
    CheckStep ClearCall();

    // Works off what the PBX sends until done gives true.
    enum class Patience { kInterruptible, kInAnyCase };
    WaitEnd WaitUntil(const std::function<bool()>& done, Patience patience = Patience::kInterruptible);
    void TakeReceived();
    void TakeMessage(uint32_t invokeId, std::string_view xml);
    void NoteSent(std::string_view request);

    ShowStep show;
    CheckReport report;
    PbxExchange exchange;
    AddressList endpoints;     // of the PBX
    ByteString firstReceived;  // the first bytes from the PBX
    bool failed = false;       // a step has
};

}  // namespace velmora::ctl
