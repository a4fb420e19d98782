#pragma once

#include "fuzzing/support/tls_stages.h"

namespace velmora {

// Goes on from a stage with what the input says, step by step: a byte for the step, then its own bytes.
//
//   0  a handshake message: its type, its length in one byte, its body
//   1  likewise, with a length of two bytes
//   2  a record of any type: the type, a length of one byte, the content
//   3  the peer's own hello
//   4  a server's Certificate message with its own certificate, or a client's key exchange
//   5  the peer's ChangeCipherSpec
//   6  the peer's Finished
//   7  application data: a length of one byte, the data
//   8  the endpoint sends data: a length of one byte, the data
//   9  a byte of minutes pass, and both start over, the endpoint with Reset; a server then resumes sessions
//
// Any other step counts as the remainder of its division by ten. The quotient says how its messages are put into
// records:
//
//   0         all that waits and the message leave in one record
//   1         nothing leaves: it waits for the next step with a message, with other records between the two if need be
//   2 to 13   the first 1 to 12 bytes leave, the rest waits
//   14 to 25  all leaves, in 2 to 13 records of about the same length
//
// The input ends after 12 steps.
//
// An endpoint that has failed hands out nothing; and as long as nothing but data passes behind a complete handshake,
// the endpoint hands out what the peer has sent.
void RunPeerScript(TlsStage stage, FuzzInput& input);

}  // namespace velmora
