#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// The configuration in memory, one per process, with its built-in defaults; each field is named like its registry
// value. LoadSettings fills it before the threads of the CSTA link start; they only read it. No lock.
struct Settings {
    ByteString username;         // account (extension) at the PBX
    ByteString password;         // of that account
    ByteString domain;           // of the PBX; "username@domain" is the user's device
    ByteString address;          // host name or address of the PBX
    int32_t port = 443;          // TCP port of the CSTA link
    bool encrypt = true;         // TLS on that link
    bool autooriginate = false;  // the PBX dials at once, without waiting for the user's phone
    int32_t loglevel = 0;        // highest level that the trace log writes
    int32_t loglength = 1000;    // log records that one process writes at most
    ByteString logfile;          // path of the trace log; empty turns it off
    ByteString guid;             // of this installation, 36 characters; the line's permanent identity comes from it
};

extern Settings settings;

}  // namespace velmora
