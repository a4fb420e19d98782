#pragma once

#include <cstddef>
#include <string>

namespace velmora {

// What TLS costs the best client that was measured beside ours, in nanoseconds: the processor's time for a full
// handshake and for a record, which depends on its length.
struct TlsCosts {
    double handshakeNs = 0;
    double protectRecordNs = 0;
    double protectByteNs = 0;
    double unprotectRecordNs = 0;
    double unprotectByteNs = 0;

    double ProtectNs(size_t bytes) const { return protectRecordNs + protectByteNs * static_cast<double>(bytes); }
    double UnprotectNs(size_t bytes) const { return unprotectRecordNs + unprotectByteNs * static_cast<double>(bytes); }
};

// From what tls_bench --tsv has written to a file. A case that is missing throws std::runtime_error.
TlsCosts ReadTlsCosts(const std::string& path);

}  // namespace velmora
