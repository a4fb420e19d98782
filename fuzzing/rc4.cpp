// RC4 streams in any pieces, under a key of any length, beside libcrypto's.
#include "crypto/rc4.h"

#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/libcrypto_judge.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput input(data, bytes);
    ByteString key = input.Bytes(input.U16() % 300);
    const ByteString cuts = input.Piece();
    const ByteString text = input.Rest();

    Rc4State state;
    rc4SetKey(state, key);
    ByteString encrypted;
    size_t position = 0;
    for (const char cut : cuts) {
        const ByteString piece = text.substr(position, static_cast<unsigned char>(cut));
        encrypted += rc4Process(state, piece);
        position += piece.size();
    }
    encrypted += rc4Process(state, text.substr(position));

    if (key.empty()) key.assign(1, '\0');
    Expect(encrypted == JudgesRc4(key, text), "RC4 encrypts as libcrypto does");
    return 0;
}
