// A server that is given any bytes at any stage of the handshake.
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/tls_stages.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput input(data, bytes);
    TlsConnection server = StageOf(ServerStages(), input).end;
    FeedInPieces(server, 1U + input.U8(), input);
    return 0;
}
