#pragma once

#include <cstddef>
#include <vector>

#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/keyed_peer.h"
#include "tls/session_cache.h"

namespace velmora {

// A TlsConnection in the middle of its life, with a peer that is ready to go on from there.
struct TlsStage {
    TlsConnection end;
    KeyedPeer peer;
    SessionCache sessions;  // of the process, at that time
};

// Every stage that a handshake goes through, one for each version and suite that the end speaks: at the start, behind
// each of the peer's flights and changes, and when the handshake is complete. Made once, since a handshake takes longer
// than an input; a target copies the one that it starts from. A handshake that does not go through ends the program.
//
// The clients do not verify certificates. The server's has signed itself and is trusted.
const std::vector<TlsStage>& ClientStages();
const std::vector<TlsStage>& ServerStages();

// The stage that the first byte of an input names, with the clock, the randoms and the session cache set back.
TlsStage StageOf(const std::vector<TlsStage>& stages, FuzzInput& input);

// Gives an endpoint the rest of the input in pieces, the 32nd of which is all that is left, and sends data behind each.
// One that has failed hands out nothing, nor does one that has keys, for the input has none.
void FeedInPieces(TlsConnection& end, size_t pieceBytes, FuzzInput& input);

}  // namespace velmora
