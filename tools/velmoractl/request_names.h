#pragma once

#include <string_view>

namespace velmora::ctl {

// The CSTA messages of each request that the provider sends: by name alone, since the trace log shows messages without
// the invoke IDs that tie an answer to its request. One that has no refusal of its own is refused by a CSTAErrorCode.
struct RequestNames {
    std::string_view request;
    std::string_view granted;
    std::string_view refused = {};
};

inline constexpr RequestNames kLoginNames = {"StartApplicationSession", "StartApplicationSessionPosResponse",
                                             "StartApplicationSessionNegResponse"};
inline constexpr RequestNames kResetNames = {"ResetApplicationSessionTimer", "ResetApplicationSessionTimerPosResponse",
                                             "ResetApplicationSessionTimerNegResponse"};
inline constexpr RequestNames kMonitorNames = {"MonitorStart", "MonitorStartResponse"};
inline constexpr RequestNames kCallNames = {"MakeCall", "MakeCallResponse"};
inline constexpr RequestNames kClearNames = {"ClearConnection", "ClearConnectionResponse"};

inline constexpr const RequestNames* kRequests[] = {&kLoginNames, &kResetNames, &kMonitorNames, &kCallNames,
                                                    &kClearNames};

// Refuses whatever request is next in line.
inline constexpr std::string_view kCstaError = "CSTAErrorCode";

}  // namespace velmora::ctl
