#pragma once

#include <winsock2.h>

#include "tools/pbxsim/options.h"

namespace velmora::pbxsim {

// Listens and serves clients, all on the calling thread, until the event stop is set or, with the option once, the
// first client has gone. Prints where it listens, with TLS then whose certificate it shows, then a line for every
// message, each flushed at once.
//
// False when it has no certificate to show or could not listen; standard error then says why.
bool Serve(const Options& options, HANDLE stop);

}  // namespace velmora::pbxsim
