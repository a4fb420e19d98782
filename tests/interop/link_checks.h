#pragma once

#include "tests/interop/tls_dialogue.h"

namespace velmora::interop {

// What every link has to do once its handshake is complete, whichever end we are and whoever is the other.

void ExpectDataOfEveryLengthCarried(TlsDialogue& dialogue);

// The peer closes the connection behind its last data.
void ExpectCloseNotifyAnswered(TlsDialogue& dialogue);

// A record is changed on its way to us: it ends the connection, and the peer hears why.
void ExpectTamperedRecordRefused(TlsDialogue& dialogue);

// A record is changed on its way to the peer, whose alert we hear.
void ExpectAlertForTamperedRecordNoticed(TlsDialogue& dialogue);

}  // namespace velmora::interop
