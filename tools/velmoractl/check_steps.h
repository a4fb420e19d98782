#pragma once

#include <string_view>

#include "tls/tls_connection.h"
#include "tools/velmoractl/check_report.h"
#include "tools/velmoractl/pbx_exchange.h"

namespace velmora::ctl {

// What each step of a check comes to, put into words. The caller gives a step its time.

// How waiting for the PBX ended.
enum class WaitEnd { kAnswered, kTimeout, kClosed, kInterrupted };

// The settings in the registry: each that the provider cannot work with is named with the command that mends it, and
// those are noted that are likely to be wrong.
CheckStep SettingsStep();

// The name in facts and its endpoints.
CheckStep AddressStep(const CheckFacts& facts);

// error is Winsock's, 0 for none.
CheckStep ConnectionStep(const CheckFacts& facts, int error);

// received holds the first bytes from the PBX, none when nothing came. Skipped when the link is not encrypted.
CheckStep EncryptionStep(const CheckFacts& facts, const TlsConnection& tls, WaitEnd end, std::string_view received);

// Likewise. A login that was answered counts whatever end is, as do the answers below.
CheckStep LoginStep(const CheckFacts& facts, const PbxExchange& exchange, WaitEnd end, std::string_view received);

// Skipped when the provider has not asked for it.
CheckStep MonitoringStep(const CheckFacts& facts, const PbxExchange& exchange, WaitEnd end);

// bound is whether the answer has reached the call. It is in facts then.
CheckStep CallStep(const CheckFacts& facts, const PbxExchange& exchange, bool bound, WaitEnd end);

CheckStep ClearingStep(const CheckFacts& facts, const PbxExchange& exchange, WaitEnd end);

// A step behind one that failed.
CheckStep NotTried();

}  // namespace velmora::ctl
