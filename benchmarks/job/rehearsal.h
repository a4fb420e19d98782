#pragma once

#include <vector>

#include "benchmarks/job/pbx.h"
#include "benchmarks/job/tls_costs.h"

namespace velmora {

// The file of a FloorScript for a job whose requests are known from a run of the provider.
ByteString ScriptInTheClear(const std::vector<Request>& requests);

// Encrypted: the bytes are those of the product's own client in a handshake with the PBX of the benchmark, whose side
// is the same each time; what TLS costs the floor is the best client's time.
//
// The whole of the handshake's is spent behind the server's first flight, where nearly all of it falls.
ByteString EncryptedScript(const std::vector<Request>& requests, const ByteString& domain, const TlsCosts& costs);

}  // namespace velmora
