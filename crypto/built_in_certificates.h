#pragma once

#include <string_view>

namespace velmora {

// Two certificates that come with the system, as PEM text (RFC 7468): RSA keys of 1024 bits, signed with SHA-1. Nothing
// reads them, and nobody has their private keys: they trust nothing and prove nothing by themselves.
//
// Every line of a text ends with CR LF, the last one too.

// A certification authority, signed by itself: 1324 characters.
extern const std::string_view kBuiltInCaPem;

// A device, signed by that authority: 1298 characters.
extern const std::string_view kBuiltInDevicePem;

}  // namespace velmora
