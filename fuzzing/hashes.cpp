// MD5, SHA-1 and their HMACs of any data, in any pieces, beside libcrypto's.
#include <algorithm>

#include "crypto/hmac.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/libcrypto_judge.h"

namespace velmora {
namespace {

template <typename State>
ByteString InPieces(FuzzInput cuts, std::string_view data) {
    State state;
    while (!data.empty()) {
        const size_t count = std::min<size_t>(data.size(), 1U + cuts.U8());
        state.update(data.substr(0, count));
        data.remove_prefix(count);
    }
    return state.digest();
}

}  // namespace
}  // namespace velmora

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput input(data, bytes);
    const ByteString key = input.Bytes(input.U8() % 65);
    const FuzzInput cuts = input;
    const ByteString message = input.Rest();
    const ByteString md5 = JudgesDigest("MD5", message);
    const ByteString sha1 = JudgesDigest("SHA1", message);
    Expect(md5Digest(message) == md5, "MD5 is libcrypto's");
    Expect(sha1Digest(message) == sha1, "SHA-1 is libcrypto's");
    Expect(InPieces<Md5State>(cuts, message) == md5, "MD5 does not depend on the pieces");
    Expect(InPieces<Sha1State>(cuts, message) == sha1, "SHA-1 does not depend on the pieces");
    Expect(hmacMd5(key, message) == JudgesHmac("MD5", key, message), "HMAC-MD5 is libcrypto's");
    Expect(hmacSha1(key, message) == JudgesHmac("SHA1", key, message), "HMAC-SHA1 is libcrypto's");
    return 0;
}
