// Any bytes as an RSA private key. One that has all its numbers, none of them long, is used as well.
#include <algorithm>
#include <cstddef>

#include "crypto/rsa.h"
#include "crypto/rsa_private_key.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/quiet_log.h"

namespace {

constexpr size_t kMostBytesUsed = 150;  // of all numbers, or nearly all time would go into powers

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    RenderLogRecords();
    const RsaPrivateKeyNumbers numbers = readRsaPrivateKey(FuzzInput(data, bytes).Rest());
    const size_t sum = numbers.modulus.size() + numbers.publicExponent.size() + numbers.privateExponent.size() +
                       numbers.prime1.size() + numbers.prime2.size();
    Expect(sum <= bytes, "the numbers are parts of the key");
    if (sum == 0 || sum > kMostBytesUsed) return 0;

    RsaKey key;
    setPrivateKey(key, numbers.privateExponent, numbers.publicExponent, numbers.modulus, numbers.prime1,
                  numbers.prime2);
    const ByteString block("\0\2some block of a few bytes", 26);
    const size_t most = std::max(block.size(), numbers.modulus.size() + 4);
    Expect(rsaPrivate(key, block).size() <= most, "a result has no more bytes than the block or the modulus");
    Expect(rsaPublic(key, block).size() <= most, "a result has no more bytes than the block or the modulus");
    rsaSign(key, block);
    return 0;
}
