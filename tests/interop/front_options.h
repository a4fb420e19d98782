#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "config/byte_string.h"
#include "tests/interop/tls_peer.h"

namespace velmora::interop {

// What the command line of tls_front asks for.
struct FrontOptions {
    TlsLibrary implementation = TlsLibrary::kOpenSsl;
    TlsPeerOptions peer;
    uint16_t listenPort = 0;   // 0: any free one
    uint16_t farPort = 0;      // of the PBX
    size_t splitBytes = 0;     // sent to the TLS end at a time; 0: as they come
    int32_t tamperRecord = 0;  // which of our records of application data is tampered with, from 1; 0: none
};

struct FrontCommandLine {
    FrontOptions options;
    ByteString fault;  // what is wrong, for people; empty: nothing is
};

FrontCommandLine ParseFrontCommandLine(const std::vector<ByteString>& arguments);

extern const std::string_view kFrontHelp;

}  // namespace velmora::interop
