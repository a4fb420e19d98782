#include "crypto/aes.h"

#include <bit>
#include <cstddef>
#include <cstring>

#include "crypto/aes_path.h"
#include "crypto/aes_tables.h"
#include "crypto/cpu_features.h"

namespace velmora {
namespace {

constexpr size_t kBlockWords = kAesBlockBytes / 4;

AesKeys keysOf(const AesCipher& cipher) {
    return {cipher.roundKeys.data(), static_cast<size_t>(cipher.rounds)};
}

const AesPath& fastestPath() {
    return cpuFeatures().aes ? kAesInstructions : kAesPortable;
}

const uint8_t* unsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const uint8_t*>(bytes.data());
}

uint8_t* unsignedBytes(ByteString& bytes) {
    return reinterpret_cast<uint8_t*>(bytes.data());
}

// The first count bytes, missing ones being zero.
ByteString exactly(size_t count, ByteString bytes) {
    bytes.resize(count);
    return bytes;
}

// FIPS 197, section 5.2. A word holds a column with its first byte lowest, so RotWord is a rotation right by 8 bits and
// the round constant goes into the low byte.
void expandKey(AesCipher& cipher, const ByteString& key) {
    const auto keyWords = static_cast<size_t>(cipher.keyWords);
    const size_t words = kBlockWords * (keysOf(cipher).rounds + 1);
    auto& w = cipher.roundKeys;
    std::memcpy(w.data(), exactly(keyWords * 4, key).data(), keyWords * 4);
    uint8_t roundConstant = 1;
    for (size_t i = keyWords; i < words; ++i) {
        uint32_t temp = w[i - 1];
        if (i % keyWords == 0) {
            temp = aesSubWord(std::rotr(temp, 8)) ^ roundConstant;
            roundConstant = aesMultiply(roundConstant, 2);
        } else if (keyWords > 6 && i % keyWords == 4) {
            temp = aesSubWord(temp);
        }
        w[i] = w[i - keyWords] ^ temp;
    }
}

// FIPS 197, section 5.3.5: the schedule of the equivalent inverse cipher. The first and the last round key stay as they
// are.
void turnIntoDecryptionSchedule(AesCipher& cipher) {
    const size_t lastRoundKey = kBlockWords * keysOf(cipher).rounds;
    for (size_t i = kBlockWords; i < lastRoundKey; ++i) cipher.roundKeys[i] = aesInverseMixColumn(cipher.roundKeys[i]);
}

bool isReady(const AesCipher& cipher) {
    return cipher.rounds != 0 && !cipher.chain.empty();
}

using CbcOperation = decltype(AesPath::encryptCbc);

ByteString processCbc(AesCipher& cipher, CbcOperation operation, const ByteString& data) {
    const size_t blocks = data.size() / kAesBlockBytes;
    ByteString output(blocks * kAesBlockBytes, '\0');
    cipher.chain.resize(kAesBlockBytes);  // short only after a CFB stream that ended within a block
    operation(keysOf(cipher), unsignedBytes(cipher.chain), unsignedBytes(data), unsignedBytes(output), blocks);
    return output;
}

// The piece of data at position XORed with the encrypted chain: 16 bytes, or what is left.
ByteString cfbPiece(const AesCipher& cipher, const ByteString& data, size_t position) {
    ByteString piece = data.substr(position, kAesBlockBytes);
    const ByteString mask = cipher.encryptBlock(cipher.chain);
    for (size_t index = 0; index < piece.size(); ++index) {
        piece[index] = static_cast<char>(piece[index] ^ mask[index]);
    }
    return piece;
}

ByteString encryptCfb(AesCipher& cipher, const ByteString& data) {
    ByteString output;
    output.reserve(data.size());
    for (size_t position = 0; position < data.size(); position += kAesBlockBytes) {
        cipher.chain = cfbPiece(cipher, data, position);
        output += cipher.chain;
    }
    return output;
}

ByteString decryptCfb(AesCipher& cipher, const ByteString& data) {
    ByteString output;
    output.reserve(data.size());
    for (size_t position = 0; position < data.size(); position += kAesBlockBytes) {
        output += cfbPiece(cipher, data, position);
        if (data.size() - position >= kAesBlockBytes) cipher.chain = data.substr(position, kAesBlockBytes);
    }
    return output;
}

}  // namespace

void AesCipher::setKeySize(int keyBits, uint32_t newMode) {
    mode = newMode;
    blockWords = 0;
    keyWords = 0;
    rounds = 0;
    if (keyBits != 128 && keyBits != 192 && keyBits != 256) return;
    blockWords = 4;
    keyWords = keyBits / 32;
    rounds = keyWords + 6;
}

void AesCipher::initEncrypt(const ByteString& key, const ByteString& iv) {
    chain = exactly(static_cast<size_t>(blockWords) * 4, iv);
    if (rounds != 0) expandKey(*this, key);
}

void AesCipher::initDecrypt(const ByteString& key, const ByteString& iv) {
    initEncrypt(key, iv);
    if (mode != kAesCfb) turnIntoDecryptionSchedule(*this);
}

ByteString AesCipher::encrypt(const ByteString& data) {
    if (!isReady(*this)) return {};
    if (mode == kAesCbc) return processCbc(*this, fastestPath().encryptCbc, data);
    if (mode == kAesCfb) return encryptCfb(*this, data);
    return {};
}

ByteString AesCipher::decrypt(const ByteString& data) {
    if (!isReady(*this)) return {};
    const CbcOperation decryptCbc = cpuFeatures().vaes ? aesDecryptCbcVaes : fastestPath().decryptCbc;
    if (mode == kAesCbc) return processCbc(*this, decryptCbc, data);
    if (mode == kAesCfb) return decryptCfb(*this, data);
    return {};
}

void AesCipher::encryptBlocks(char* blocks, size_t count) {
    auto* const bytes = reinterpret_cast<uint8_t*>(blocks);
    fastestPath().encryptCbc(keysOf(*this), unsignedBytes(chain), bytes, bytes, count);
}

ByteString AesCipher::encryptBlock(const ByteString& block) const {
    if (!isReady(*this)) return {};
    ByteString output = exactly(kAesBlockBytes, block);
    fastestPath().encryptBlock(keysOf(*this), unsignedBytes(output));
    return output;
}

ByteString AesCipher::decryptBlock(const ByteString& block) const {
    if (!isReady(*this)) return {};
    ByteString output = exactly(kAesBlockBytes, block);
    fastestPath().decryptBlock(keysOf(*this), unsignedBytes(output));
    return output;
}

}  // namespace velmora
