#include "crypto/sha1.h"

#include <bit>
#include <cstring>

#include "crypto/cpu_features.h"
#include "crypto/hash_blocks.h"
#include "crypto/sha1_compress.h"

namespace velmora {
namespace {

static_assert(std::endian::native == std::endian::little, "a big-endian word is one that is swapped");

void storeBigEndian(uint8_t* target, uint32_t word) {
    const uint32_t swapped = __builtin_bswap32(word);
    std::memcpy(target, &swapped, sizeof swapped);
}

void compressBlocks(uint32_t (&chain)[5], const uint8_t* blocks, size_t count) {
    if (cpuFeatures().sha) {
        sha1CompressShaExtensions(chain, blocks, count);
    } else {
        sha1CompressPortable(chain, blocks, count);
    }
}

void storeLength(uint8_t* target, const HashBitCount& bitCount) {
    storeBigEndian(target, bitCount[1]);
    storeBigEndian(target + 4, bitCount[0]);
}

void storeChain(uint8_t* target, const uint32_t (&chain)[5]) {
    for (size_t word = 0; word < 5; ++word) storeBigEndian(target + 4 * word, chain[word]);
}

}  // namespace

ByteString sha1Digest(const ByteString& data) {
    Sha1State state;
    addToBitCount(state.bitCount, data.size());
    const auto* const bytes = reinterpret_cast<const uint8_t*>(data.data());
    const size_t blocks = data.size() / kHashBlockBytes;
    // The tail is written before the long work, so that its stores have come to rest when it is read.
    const HashTail tail(bytes + blocks * kHashBlockBytes, state.bitCount, storeLength);
    compressBlocks(state.chain, bytes, blocks);
    compressBlocks(state.chain, tail.bytes, tail.blocks);
    ByteString digest(Sha1State::kDigestBytes, '\0');
    storeChain(reinterpret_cast<uint8_t*>(digest.data()), state.chain);
    return digest;
}

void Sha1State::update(std::string_view bytes) {
    updateHash(*this, bytes, [this](const uint8_t* blocks, size_t count) { compressBlocks(chain, blocks, count); });
}

ByteString Sha1State::digest() const {
    ByteString digest(kDigestBytes, '\0');
    Sha1State(*this).finish(reinterpret_cast<uint8_t*>(digest.data()));
    return digest;
}

void Sha1State::finish(uint8_t* target) {
    const HashTail tail(buffer, bitCount, storeLength);
    compressBlocks(chain, tail.bytes, tail.blocks);
    storeChain(target, chain);
}

}  // namespace velmora
