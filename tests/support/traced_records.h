#pragma once

#include <string>
#include <vector>

#include "tests/support/tls_records.h"
#include "tls/key_derivation.h"

namespace velmora {

// What a ClientHello says; all of it empty when the bytes do not start with one in a record of its own.
struct ClientHello {
    std::string sessionId;
    std::string suites;
    std::string extensions;  // with the length of the block in front; empty when there is no block
};
ClientHello ReadClientHello(const std::string& bytes);

// Reads along, and writes into, an encrypted connection whose key block is known: one with AES of 128 bits and SHA-1.
//
// The records of one end, from the first on, decrypted from its ChangeCipherSpec on. A record with a wrong MAC fails
// the test and ends the list.
std::vector<WireRecord> DecryptedRecords(const std::string& keyBlock, Endpoint sender, const std::string& bytes);

// The bytes of a record that this end could send next, encrypted, behind all that it has sent so far.
std::string NextRecordBytes(const std::string& keyBlock, Endpoint sender, const std::string& sentSoFar,
                            const WireRecord& record);

}  // namespace velmora
