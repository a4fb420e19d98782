#include "crypto/prf.h"

#include <cstddef>

#include "crypto/hmac_key.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"

namespace velmora {
namespace {

template <typename Hash>
ByteString pHash(const ByteString& secret, const ByteString& seed, int32_t length) {
    const HmacKey<Hash> key(secret);
    if (length <= 0) return {};
    const size_t blocks = (static_cast<size_t>(length) + Hash::kDigestBytes - 1) / Hash::kDigestBytes;
    ByteString output(blocks * Hash::kDigestBytes, '\0');
    auto* const bytes = reinterpret_cast<uint8_t*>(output.data());
    ByteString a = seed;  // A(0) of the RFC
    for (size_t block = 0; block < blocks; ++block) {
        a = key.digest({a});
        key.digest({a, seed}, bytes + block * Hash::kDigestBytes);
    }
    return output;
}

}  // namespace

ByteString pHashMd5(const ByteString& secret, const ByteString& seed, int32_t length) {
    return pHash<Md5State>(secret, seed, length);
}

ByteString pHashSha1(const ByteString& secret, const ByteString& seed, int32_t length) {
    return pHash<Sha1State>(secret, seed, length);
}

ByteString tlsPrf(const ByteString& secret, const ByteString& label, const ByteString& seed, int32_t length) {
    const size_t halfBytes = (secret.size() + 1) / 2;
    const ByteString labelSeed = label + seed;
    ByteString output = pHashMd5(secret.substr(0, halfBytes), labelSeed, length);
    const ByteString mask = pHashSha1(secret.substr(secret.size() - halfBytes), labelSeed, length);
    output.resize(length > 0 ? static_cast<size_t>(length) : 0);
    for (size_t index = 0; index < output.size(); ++index) {
        output[index] = static_cast<char>(output[index] ^ mask[index]);
    }
    return output;
}

}  // namespace velmora
