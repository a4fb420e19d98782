#pragma once

#include <cstdint>

#include "config/byte_string.h"
#include "tools/velmoractl/exit_codes.h"
#include "tools/velmoractl/log_note.h"
#include "tools/velmoractl/pbx_exchange.h"

namespace velmora::ctl {

// How a run ended, for people: the last line that they see, and what they can do about it.
struct Verdict {
    ExitCode code = ExitCode::kDone;
    ByteString sentence;  // begins with "OK: ", "FAILED: " or "UNKNOWN: "
    ByteString advice;    // empty when there is nothing to do
};

// What a call is judged by. Its answers are in the PbxExchange.
struct CallFacts {
    ByteString number;  // as dialled
    ByteString device;  // the user's: "40@example.com"
    ByteString peer;    // the PBX: "127.0.0.1:443"
    bool encrypted = false;
    TlsFailure tlsFailure;     // of the link's encryption; empty when none is seen
    bool connected = false;    // as far as the trace log tells
    bool logVisible = false;   // without it, only the provider's own codes are known
    bool callPlaced = false;   // TSPI_lineMakeCall was called and took the call
    int32_t makeCallCode = 0;  // what it returned, when it did not
    uint32_t timeoutSeconds = 0;
};

// Judges a call by the first thing that went wrong.
Verdict JudgeCall(const CallFacts& facts, const PbxExchange& exchange);

}  // namespace velmora::ctl
