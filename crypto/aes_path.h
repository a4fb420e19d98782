#pragma once

#include <cstddef>
#include <cstdint>

namespace velmora {

inline constexpr size_t kAesBlockBytes = 16;

// A schedule of AesCipher, for encryption or for decryption: 4 * (rounds + 1) words, whose bytes in memory are in the
// order of FIPS 197, so that they can be loaded as they lie.
struct AesKeys {
    const uint32_t* words;
    size_t rounds;  // 10, 12 or 14
};

// The work on blocks, done with one set of instructions. All paths give the same. CBC goes over count blocks from
// source to target, which do not overlap, though encryption may be done where the blocks lie, and carries the 16 bytes
// of chain on.
struct AesPath {
    void (*encryptBlock)(const AesKeys& keys, uint8_t* block);
    void (*decryptBlock)(const AesKeys& keys, uint8_t* block);
    void (*encryptCbc)(const AesKeys& keys, uint8_t* chain, const uint8_t* source, uint8_t* target, size_t count);
    void (*decryptCbc)(const AesKeys& keys, uint8_t* chain, const uint8_t* source, uint8_t* target, size_t count);
};

extern const AesPath kAesPortable;
extern const AesPath kAesInstructions;  // CpuFeatures::aes: one block an instruction

// As kAesInstructions.decryptCbc, with two blocks an instruction; for CpuFeatures::vaes. The other operations have no
// independent blocks to gain from.
void aesDecryptCbcVaes(const AesKeys& keys, uint8_t* chain, const uint8_t* source, uint8_t* target, size_t count);

}  // namespace velmora
