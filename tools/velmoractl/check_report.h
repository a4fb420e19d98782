#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "config/byte_string.h"
#include "tools/velmoractl/exit_codes.h"
#include "tools/velmoractl/verdict.h"

namespace velmora::ctl {

// What a check of the way to the PBX has found, step by step, and its two forms: lines for people, JSON for scripts.

enum class StepState { kOk, kFailed, kSkipped };

struct CheckStep {
    ByteString name;      // one word: "address"
    uint64_t tookMs = 0;  // 0 for a step that was skipped
    StepState state = StepState::kSkipped;
    ByteString sentence;              // what was found
    std::vector<ByteString> notes;    // what is worth knowing besides, a sentence each
    ExitCode code = ExitCode::kDone;  // of a step that failed, as is the next
    ByteString advice;
};

// What the handshake has agreed on.
struct TlsFacts {
    ByteString version;          // "TLS 1.0"
    ByteString suite;            // its registered name
    uint32_t keyBits = 0;        // of the certificate's RSA key
    ByteString certificateName;  // its common name; empty when it has none
};

struct CheckFacts {
    ByteString address;  // of the PBX, as set
    int32_t port = 0;    // 0 while the settings are not loaded
    ByteString device;   // the user's: "40@example.com"
    bool encrypted = false;
    uint32_t timeoutSeconds = 0;        // that each answer was waited for
    ByteString number;                  // to call, as dialled; empty: none
    std::vector<ByteString> endpoints;  // the addresses that the name stands for
    std::optional<TlsFacts> tls;        // of an encrypted link that is set up
    ByteString sessionId;
    int32_t sessionSeconds = 0;  // granted; 0: none
    ByteString callId;           // of a call that the PBX bound, as is the next
    ByteString callDevice;

    ByteString Peer() const;  // "127.0.0.1:443"
};

struct CheckReport {
    CheckFacts facts;
    std::vector<CheckStep> steps;
};

// Ends with the first step that failed. A check without one is OK.
Verdict JudgeCheck(const CheckReport& report);

// "ok", "FAIL", "-".
std::string_view StepMark(StepState state);

// What follows the mark: milliseconds, name, sentence; a line more for each note. Each line ends with LF.
ByteString StepText(const CheckStep& step);

// The whole report as one JSON object and LF. Facts that the check did not come to are left out.
ByteString CheckJson(const CheckReport& report);

}  // namespace velmora::ctl
