#include <bit>
#include <cstring>

#include "crypto/aes_path.h"
#include "crypto/aes_tables.h"

namespace velmora {
namespace {

static_assert(std::endian::native == std::endian::little, "words are loaded and stored as they lie in memory");

struct Block {
    uint32_t columns[4];
};

Block load(const uint8_t* bytes) {
    Block block;
    std::memcpy(block.columns, bytes, kAesBlockBytes);
    return block;
}

void store(uint8_t* bytes, const Block& block) {
    std::memcpy(bytes, block.columns, kAesBlockBytes);
}

Block operator^(const Block& one, const Block& other) {
    Block sum;
    for (int column = 0; column < 4; ++column) sum.columns[column] = one.columns[column] ^ other.columns[column];
    return sum;
}

Block roundKey(const AesKeys& keys, size_t round) {
    Block key;
    std::memcpy(key.columns, keys.words + 4 * round, kAesBlockBytes);
    return key;
}

// ShiftRows puts the bytes of a column together from four; kDistance says how far to the right the next one lies: 1 in
// the cipher, 3 in its inverse.

// SubBytes, ShiftRows and MixColumns, or their inverses.
template <unsigned kDistance>
Block mixRound(const std::array<uint32_t, 256>& table, const Block& block) {
    Block mixed;
    for (unsigned column = 0; column < 4; ++column) {
        mixed.columns[column] = table[aesByte(block.columns[column], 0)] ^
                                std::rotl(table[aesByte(block.columns[(column + kDistance) % 4], 1)], 8) ^
                                std::rotl(table[aesByte(block.columns[(column + 2 * kDistance) % 4], 2)], 16) ^
                                std::rotl(table[aesByte(block.columns[(column + 3 * kDistance) % 4], 3)], 24);
    }
    return mixed;
}

// SubBytes and ShiftRows, or their inverses.
template <unsigned kDistance>
Block lastRound(const std::array<uint8_t, 256>& box, const Block& block) {
    Block shifted;
    for (unsigned column = 0; column < 4; ++column) {
        shifted.columns[column] =
            aesColumn(box[aesByte(block.columns[column], 0)], box[aesByte(block.columns[(column + kDistance) % 4], 1)],
                      box[aesByte(block.columns[(column + 2 * kDistance) % 4], 2)],
                      box[aesByte(block.columns[(column + 3 * kDistance) % 4], 3)]);
    }
    return shifted;
}

// FIPS 197, section 5.1.
Block encrypted(const AesKeys& keys, Block block) {
    block = block ^ roundKey(keys, 0);
    for (size_t round = 1; round < keys.rounds; ++round) {
        block = mixRound<1>(kAesTables.forward, block) ^ roundKey(keys, round);
    }
    return lastRound<1>(kAesTables.sBox, block) ^ roundKey(keys, keys.rounds);
}

// FIPS 197, section 5.3.5: the round keys are those of the equivalent inverse cipher, taken from the last on.
Block decrypted(const AesKeys& keys, Block block) {
    block = block ^ roundKey(keys, keys.rounds);
    for (size_t round = keys.rounds - 1; round > 0; --round) {
        block = mixRound<3>(kAesTables.inverse, block) ^ roundKey(keys, round);
    }
    return lastRound<3>(kAesTables.inverseSBox, block) ^ roundKey(keys, 0);
}

void encryptBlock(const AesKeys& keys, uint8_t* block) {
    store(block, encrypted(keys, load(block)));
}

void decryptBlock(const AesKeys& keys, uint8_t* block) {
    store(block, decrypted(keys, load(block)));
}

void encryptCbc(const AesKeys& keys, uint8_t* chain, const uint8_t* source, uint8_t* target, size_t count) {
    Block previous = load(chain);
    for (; count > 0; --count, source += kAesBlockBytes, target += kAesBlockBytes) {
        previous = encrypted(keys, previous ^ load(source));
        store(target, previous);
    }
    store(chain, previous);
}

void decryptCbc(const AesKeys& keys, uint8_t* chain, const uint8_t* source, uint8_t* target, size_t count) {
    Block previous = load(chain);
    for (; count > 0; --count, source += kAesBlockBytes, target += kAesBlockBytes) {
        const Block block = load(source);
        store(target, decrypted(keys, block) ^ previous);
        previous = block;
    }
    store(chain, previous);
}

}  // namespace

const AesPath kAesPortable = {encryptBlock, decryptBlock, encryptCbc, decryptCbc};

}  // namespace velmora
