#pragma once

#include <string_view>

#include "tls/tls_connection.h"
#include "tools/velmoractl/check_report.h"

namespace velmora::ctl {

// What can be told about the provider's end of a TLS connection from outside.

// Whether the link is encrypted: the handshake is complete, nothing has failed, and the suite is one that we know.
bool IsEncrypted(const TlsConnection& tls);

TlsFacts DescribeTls(const TlsConnection& tls);

// Why this end has given the handshake up, as the end of a sentence about the PBX: "named a version before TLS 1.0".
// Empty while it has not.
ByteString HandshakeFault(const TlsConnection& tls);

// Whether what the PBX has sent first begins like a record of SSL 3.0 or TLS (RFC 2246, 6.2.1). False for fewer than
// two bytes.
bool LooksLikeTls(std::string_view received);

}  // namespace velmora::ctl
