#pragma once

#include "config/byte_string.h"

namespace velmora {

// A certificate with its private key, from tests/support/identities: FOR TESTS ONLY.
struct TlsIdentity {
    ByteString certificate;  // X.509 in DER
    ByteString privateKey;   // an RSAPrivateKey in DER
};

// "rsa1024", "rsa2048", "rsa4096": a PBX "pbx.velmora.example" that has signed its own certificate. "rsa512" likewise,
// for fuzzing: its powers take the least time. It signs nothing that a peer could check, for a signature has 1024 bits.
// "client": a client with a key of 1024 bits, whose certificate "Velmora Client Authority" has signed.
TlsIdentity LoadTlsIdentity(const ByteString& name);

// The certificate of "Velmora Client Authority".
ByteString ClientAuthorityCertificate();

// Makes an identity the process's own: a server shows it, and a client that is asked for one.
void UseTlsIdentity(const ByteString& name);

}  // namespace velmora
