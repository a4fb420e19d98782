#pragma once

#include <vector>

#include "config/byte_string.h"

namespace velmora::pbxsim {

// What a PBX shows to be who it is, and proves it with.
struct Identity {
    std::vector<ByteString> certificates;  // X.509 in DER, the PBX's own first
    ByteString privateKey;                 // its RSAPrivateKey (RFC 8017, appendix A.1.2) in DER
};

// Reads both files: certificates in DER, one behind the other, and a private key in DER. When a file cannot be read, is
// something else (PEM, say) or does not fit to the other, fault says so for people, and what to do.
Identity LoadIdentity(const ByteString& certificateFile, const ByteString& keyFile, ByteString& fault);

// The common name in the PBX's own certificate, as text.
ByteString CommonNameOf(const Identity& identity);

// Makes the identity the process's own, for every TlsConnection of it.
void UseIdentity(const Identity& identity);

}  // namespace velmora::pbxsim
