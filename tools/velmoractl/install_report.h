#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "config/byte_string.h"
#include "tools/velmoractl/pe_header.h"
#include "tools/velmoractl/verdict.h"

namespace velmora::ctl {

// Whether the provider is ready on this PC: what there is of it, in lines for people and in JSON for scripts.

enum class ServiceState {
    kUnknown,  // nobody may ask
    kMissing,
    kDisabled,
    kStopped,  // the system starts it when a program uses TAPI
    kRunning,
    kChanging,  // it starts or stops just now
};

struct InstallFacts {
    ByteString path;                 // where the provider has to be
    bool present = false;            // there is a file
    std::optional<PeHeader> header;  // none when the file is no program
    ByteString version;              // "2.0.3"; empty when the file has none
    std::vector<uint32_t> ids;       // under which TAPI knows the provider; mostly one or none
    ServiceState service = ServiceState::kUnknown;
    ByteString settingFault;  // what is wrong with a setting, as a sentence; empty: nothing
    ByteString settingFix;    // the command that mends it
    ByteString address;       // of the PBX, as is the next
    ByteString port;
    ByteString device;  // the user's: "40@example.com"
    ByteString encrypt;
};

// Ends with the first thing that is missing: the file, its 64 bits, TAPI's knowledge of it, the service, a setting.
Verdict JudgeInstall(const InstallFacts& facts);

// A line for each of them. Each ends with LF.
ByteString InstallText(const InstallFacts& facts);

// The whole report as one JSON object and LF.
ByteString InstallJson(const InstallFacts& facts);

}  // namespace velmora::ctl
