// A server whose client sends well-formed records and messages, with the right keys, in any order.
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/peer_script.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    velmora::FuzzInput input(data, bytes);
    velmora::RunPeerScript(velmora::StageOf(velmora::ServerStages(), input), input);
    return 0;
}
