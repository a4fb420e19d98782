#pragma once

#include <cstddef>
#include <cstdint>

#include "config/byte_string.h"
#include "tls/transcript.h"

namespace velmora {

// From the secret that both ends share to keys and proofs: the PRF in TLS 1.0 (RFC 2246, 5, 6.3 and 8.1), nested
// digests in SSL 3.0 (RFC 6101, 5.6.9 and 6). A version of kTls10 or above means TLS.

// The master secret, 48 bytes. Of the pre-master secret the last 48 bytes count, so that the whole block of an RSA
// decryption may be given.
ByteString MasterSecret(uint16_t version, const ByteString& preMaster, const ByteString& clientRandom,
                        const ByteString& serverRandom);

// The key block that a connection's secrets, keys and IVs are cut from: exactly length bytes in TLS; in SSL 3.0 whole
// rounds of 16 bytes, at least length and at least five rounds.
ByteString KeyBlock(uint16_t version, const ByteString& masterSecret, const ByteString& clientRandom,
                    const ByteString& serverRandom, size_t length);

// The two ends of a connection.
enum class Endpoint : uint8_t { kClient, kServer };

// What the Finished message of sender proves the handshake with: 12 bytes in TLS, 36 in SSL 3.0.
ByteString VerifyData(uint16_t version, const ByteString& masterSecret, Endpoint sender, const Transcript& transcript);

}  // namespace velmora
