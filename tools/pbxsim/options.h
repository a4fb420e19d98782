#pragma once

#include <cstdint>
#include <vector>

#include "config/byte_string.h"
#include "tools/pbxsim/pbx.h"

namespace velmora::pbxsim {

// What the command line asks for.
struct Options {
    ByteString bindAddress = "127.0.0.1";  // local address or host name to listen on
    int32_t port = 5050;                   // TCP port; 0: any free one
    Behaviour behaviour;
    bool tls = false;            // speak TLS on the port
    ByteString certificateFile;  // the PBX's own certificates in DER; empty: the test identity
    ByteString keyFile;          // their private key in DER; empty together with the former
    bool refuseTls = false;      // refuse every TLS handshake
    int32_t splitBytes = 0;      // what is sent at a time goes in pieces of so many bytes; 0: whole
    bool once = false;           // end when the first client has gone
    bool quiet = false;          // print no messages
    bool help = false;           // print the help text and end
    bool version = false;        // print the version and end
};

struct CommandLine {
    Options options;
    ByteString fault;  // what is wrong and what to do, for people; empty when nothing is
};

// Reads the arguments, without the program's name. A value follows its option, or is joined to it by "=". Of an option
// given twice the last one counts; the first fault ends the reading.
CommandLine ParseCommandLine(const std::vector<ByteString>& arguments);

// The text of --help, lines ending with LF.
ByteString HelpText();

// The text of --version, likewise.
ByteString VersionText();

}  // namespace velmora::pbxsim
