#pragma once

#include "csta/dispatch.h"

namespace velmora {

// The application session with the PBX: two threads over the one connection. The receive thread collects bytes; the
// session thread cuts them into messages, applies each, and renews the session in time.

// Loads the settings, connects, logs in and starts the threads. The PBX's answers to MakeCall go to bindCall, on the
// session thread, under the connection's lock. A failed connection is only logged.
//
// An error of LoadSettings (a number that is none) passes through; nothing is connected then, and no thread runs.
void StartSession(BindCallFunction bindCall);

// Ends the link and waits for both threads. Does nothing more when they do not run.
void StopSession();

}  // namespace velmora
