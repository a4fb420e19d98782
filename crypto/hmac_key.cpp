#include "crypto/hmac_key.h"

#include <stdexcept>

#include "crypto/hash_blocks.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"

namespace velmora {
namespace {

constexpr int kInnerPad = 0x36;
constexpr int kOuterPad = 0x5C;

void xorEach(char (&block)[kHashBlockBytes], int mask) {
    for (char& byte : block) byte = static_cast<char>(byte ^ mask);
}

}  // namespace

template <typename Hash>
HmacKey<Hash>::HmacKey(std::string_view key) {
    if (key.size() > kHashBlockBytes) throw std::invalid_argument("HMAC key longer than 64 bytes");
    char block[kHashBlockBytes] = {};
    key.copy(block, key.size());
    xorEach(block, kInnerPad);
    inner.update(std::string_view(block, sizeof block));
    xorEach(block, kInnerPad ^ kOuterPad);
    outer.update(std::string_view(block, sizeof block));
}

template <typename Hash>
void HmacKey<Hash>::digest(std::initializer_list<std::string_view> pieces, uint8_t* target) const {
    Hash hash = inner;
    for (const std::string_view piece : pieces) hash.update(piece);
    finish(hash, target);
}

template <typename Hash>
void HmacKey<Hash>::finish(Hash& hash, uint8_t* target) const {
    char innerDigest[Hash::kDigestBytes];
    hash.finish(reinterpret_cast<uint8_t*>(innerDigest));

    hash = outer;
    hash.update(std::string_view(innerDigest, sizeof innerDigest));
    hash.finish(target);
}

template <typename Hash>
ByteString HmacKey<Hash>::digest(std::initializer_list<std::string_view> pieces) const {
    ByteString bytes(Hash::kDigestBytes, '\0');
    digest(pieces, reinterpret_cast<uint8_t*>(bytes.data()));
    return bytes;
}

template class HmacKey<Md5State>;
template class HmacKey<Sha1State>;

}  // namespace velmora
