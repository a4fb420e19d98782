// A client that is given any bytes at any stage of the handshake, with or without looking at certificates and names.
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/tls_stages.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput input(data, bytes);
    TlsConnection client = StageOf(ClientStages(), input).end;
    const uint8_t choices = input.U8();
    client.verifyCertificates = choices % 2 != 0;
    if (choices / 2 % 2 != 0) client.SetExpectedDomain("pbx.velmora.example");
    FeedInPieces(client, 1U + choices, input);
    return 0;
}
