#include "crypto/aes.h"

#include <gtest/gtest.h>

#include "tests/support/hex.h"

namespace velmora {
namespace {

AesCipher encryptor(uint32_t mode, const ByteString& key, const ByteString& iv) {
    AesCipher cipher;
    cipher.setKeySize(static_cast<int>(8 * key.size()), mode);
    cipher.initEncrypt(key, iv);
    return cipher;
}

AesCipher decryptor(uint32_t mode, const ByteString& key, const ByteString& iv) {
    AesCipher cipher;
    cipher.setKeySize(static_cast<int>(8 * key.size()), mode);
    cipher.initDecrypt(key, iv);
    return cipher;
}

ByteString countingBytes(size_t count) {
    ByteString bytes;
    for (size_t index = 0; index < count; ++index) bytes += static_cast<char>(index);
    return bytes;
}

const ByteString kKey = fromHex("2b7e151628aed2a6abf7158809cf4f3c");
const ByteString kIv = countingBytes(16);

struct BlockVector {
    const char* source;
    const char* key;
    const char* ciphertext;
};

// The plaintext of all three is 00112233445566778899aabbccddeeff.
const BlockVector kBlockVectors[] = {
    {"FIPS 197, C.1", "000102030405060708090a0b0c0d0e0f", "69c4e0d86a7b0430d8cdb78070b4c55a"},
    {"FIPS 197, C.2", "000102030405060708090a0b0c0d0e0f1011121314151617", "dda97ca4864cdfe06eaf70a0ec0d7191"},
    {"FIPS 197, C.3", "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
     "8ea2b7ca516745bfeafc49904b496089"},
};

TEST(AesBlock, GivesTheBlocksOfFips197) {
    for (const BlockVector& vector : kBlockVectors) {
        SCOPED_TRACE(vector.source);
        const ByteString key = fromHex(vector.key);
        const ByteString plaintext = fromHex("00112233445566778899aabbccddeeff");
        EXPECT_EQ(toHex(encryptor(kAesCbc, key, kIv).encryptBlock(plaintext)), vector.ciphertext);
        EXPECT_EQ(decryptor(kAesCbc, key, kIv).decryptBlock(fromHex(vector.ciphertext)), plaintext);
    }
}

TEST(AesBlock, LeavesTheChainAlone) {
    const AesCipher cipher = encryptor(kAesCbc, kKey, kIv);
    cipher.encryptBlock(kIv);
    EXPECT_EQ(cipher.chain, kIv);
}

TEST(AesBlock, TakesTheFirst16BytesAndMissingOnesForZero) {
    const AesCipher cipher = encryptor(kAesCbc, kKey, kIv);
    EXPECT_EQ(cipher.encryptBlock(countingBytes(5)), cipher.encryptBlock(countingBytes(5) + ByteString(11, '\0')));
    EXPECT_EQ(cipher.encryptBlock(countingBytes(300)), cipher.encryptBlock(countingBytes(16)));
    EXPECT_EQ(cipher.decryptBlock(""), cipher.decryptBlock(ByteString(16, '\0')));
}

// FIPS 197, appendix A.
TEST(AesKeySchedule, IsThatOfFips197WithTheFirstByteOfAColumnLowest) {
    const AesCipher cipher128 = encryptor(kAesCbc, kKey, kIv);
    EXPECT_EQ(cipher128.roundKeys[0], 0x16157e2bU);
    EXPECT_EQ(cipher128.roundKeys[4], 0x17fefaa0U);
    EXPECT_EQ(cipher128.roundKeys[43], 0xa60c63b6U);
    const AesCipher cipher192 = encryptor(kAesCbc, fromHex("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b"), kIv);
    EXPECT_EQ(cipher192.roundKeys[6], 0xf7910cfeU);
    EXPECT_EQ(cipher192.roundKeys[51], 0x02220001U);
    const AesCipher cipher256 =
        encryptor(kAesCbc, fromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4"), kIv);
    EXPECT_EQ(cipher256.roundKeys[8], 0x1154a39bU);
    EXPECT_EQ(cipher256.roundKeys[59], 0x1e636c70U);
}

TEST(AesKeySchedule, KeepsItsFirstAndLastRoundKeyForDecryption) {
    const AesCipher forward = encryptor(kAesCbc, kKey, kIv);
    const AesCipher backward = decryptor(kAesCbc, kKey, kIv);
    for (size_t word = 0; word < 44; ++word) {
        const bool kept = word < 4 || word >= 40;
        EXPECT_EQ(forward.roundKeys[word] == backward.roundKeys[word], kept) << word;
    }
}

TEST(AesKeySchedule, StaysThatOfTheForwardCipherForDecryptionInCfb) {
    EXPECT_EQ(decryptor(kAesCfb, kKey, kIv).roundKeys, encryptor(kAesCfb, kKey, kIv).roundKeys);
}

struct StreamVector {
    const char* source;
    uint32_t mode;
    const char* key;
    const char* ciphertext;
};

const char kStreamPlaintext[] =
    "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710";

const StreamVector kStreamVectors[] = {
    {"SP 800-38A, F.2.1 and F.2.2", kAesCbc, "2b7e151628aed2a6abf7158809cf4f3c",
     "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
     "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
    {"SP 800-38A, F.2.3 and F.2.4", kAesCbc, "8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b",
     "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
     "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd"},
    {"SP 800-38A, F.2.5 and F.2.6", kAesCbc, "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
     "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
     "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"},
    {"SP 800-38A, F.3.13 and F.3.14", kAesCfb, "2b7e151628aed2a6abf7158809cf4f3c",
     "3b3fd92eb72dad20333449f8e83cfb4ac8a64537a0b3a93fcde3cdad9f1ce58b"
     "26751f67a3cbb140b1808cf187a4f4dfc04b05357c5d1c0eeac4c66f9ff7f2e6"},
    {"SP 800-38A, F.3.15 and F.3.16", kAesCfb, "8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b",
     "cdc80d6fddf18cab34c25909c99a417467ce7f7f81173621961a2b70171d3d7a"
     "2e1e8a1dd59b88b1c8e60fed1efac4c9c05f9f9ca9834fa042ae8fba584b09ff"},
    {"SP 800-38A, F.3.17 and F.3.18", kAesCfb, "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
     "dc7e84bfda79164b7ecd8486985d386039ffed143b28b1c832113c6331e5407b"
     "df10132415e54b92a13ed0a8267ae2f975a385741ab9cef82031623d55b1e471"},
};

TEST(AesStream, GivesTheStreamsOfSp80038a) {
    for (const StreamVector& vector : kStreamVectors) {
        SCOPED_TRACE(vector.source);
        const ByteString key = fromHex(vector.key);
        EXPECT_EQ(toHex(encryptor(vector.mode, key, kIv).encrypt(fromHex(kStreamPlaintext))), vector.ciphertext);
        EXPECT_EQ(toHex(decryptor(vector.mode, key, kIv).decrypt(fromHex(vector.ciphertext))), kStreamPlaintext);
    }
}

TEST(AesStream, GoesOnFromCallToCall) {
    const ByteString data = countingBytes(640);
    for (const uint32_t mode : {kAesCbc, kAesCfb}) {
        const ByteString whole = encryptor(mode, kKey, kIv).encrypt(data);
        for (size_t split = 0; split <= data.size(); split += 16) {
            SCOPED_TRACE(split);
            AesCipher forward = encryptor(mode, kKey, kIv);
            const ByteString first = forward.encrypt(data.substr(0, split));
            EXPECT_EQ(first + forward.encrypt(data.substr(split)), whole);
            AesCipher backward = decryptor(mode, kKey, kIv);
            const ByteString start = backward.decrypt(whole.substr(0, split));
            EXPECT_EQ(start + backward.decrypt(whole.substr(split)), data);
        }
    }
}

TEST(AesStream, StartsOverWhenInitialisedAgain) {
    AesCipher cipher = encryptor(kAesCbc, kKey, kIv);
    const ByteString first = cipher.encrypt(countingBytes(48));
    cipher.initEncrypt(kKey, kIv);
    EXPECT_EQ(cipher.encrypt(countingBytes(48)), first);
    cipher.initDecrypt(kKey, kIv);
    EXPECT_EQ(cipher.decrypt(first), countingBytes(48));
}

TEST(AesCbc, CarriesTheLastBlockOfCiphertextOn) {
    AesCipher cipher = encryptor(kAesCbc, kKey, kIv);
    const ByteString ciphertext = cipher.encrypt(countingBytes(160));
    EXPECT_EQ(cipher.chain, ciphertext.substr(144));
    AesCipher backward = decryptor(kAesCbc, kKey, kIv);
    backward.decrypt(ciphertext);
    EXPECT_EQ(backward.chain, ciphertext.substr(144));
}

TEST(AesCbc, DropsWhatIsBehindTheLastWholeBlock) {
    const ByteString block = encryptor(kAesCbc, kKey, kIv).encrypt(countingBytes(16));
    EXPECT_EQ(encryptor(kAesCbc, kKey, kIv).encrypt(countingBytes(20)), block);
    EXPECT_EQ(decryptor(kAesCbc, kKey, kIv).decrypt(block + "tail"), countingBytes(16));
}

TEST(AesCbc, GivesNothingForLessThanABlockAndLeavesTheChain) {
    AesCipher forward = encryptor(kAesCbc, kKey, kIv);
    AesCipher backward = decryptor(kAesCbc, kKey, kIv);
    for (const size_t count : {0U, 1U, 15U}) {
        EXPECT_EQ(forward.encrypt(countingBytes(count)), "");
        EXPECT_EQ(backward.decrypt(countingBytes(count)), "");
    }
    EXPECT_EQ(forward.chain, kIv);
    EXPECT_EQ(backward.chain, kIv);
}

TEST(AesCfb, GivesAsManyBytesAsItTakes) {
    for (size_t count = 0; count <= 50; ++count) {
        SCOPED_TRACE(count);
        const ByteString ciphertext = encryptor(kAesCfb, kKey, kIv).encrypt(countingBytes(count));
        EXPECT_EQ(ciphertext, encryptor(kAesCfb, kKey, kIv).encrypt(countingBytes(50)).substr(0, count));
        EXPECT_EQ(decryptor(kAesCfb, kKey, kIv).decrypt(ciphertext), countingBytes(count));
    }
}

TEST(AesCfb, KeepsAShortLastPieceAsItsChainWhenEncrypting) {
    AesCipher cipher = encryptor(kAesCfb, kKey, kIv);
    const ByteString ciphertext = cipher.encrypt(countingBytes(20));
    EXPECT_EQ(cipher.chain, ciphertext.substr(16));
    // The short chain goes on as a block filled up with zeros.
    const ByteString mask = cipher.encryptBlock(cipher.chain);
    EXPECT_EQ(cipher.encrypt(ByteString(16, '\0')), mask);
}

TEST(AesCfb, LeavesTheChainAfterAShortLastPieceWhenDecrypting) {
    AesCipher cipher = decryptor(kAesCfb, kKey, kIv);
    const ByteString ciphertext = encryptor(kAesCfb, kKey, kIv).encrypt(countingBytes(20));
    cipher.decrypt(ciphertext);
    EXPECT_EQ(cipher.chain, ciphertext.substr(0, 16));
}

TEST(AesCbc, FillsAShortChainThatCfbLeftWithZeros) {
    AesCipher cipher = encryptor(kAesCfb, kKey, kIv);
    const ByteString shortChain = cipher.encrypt(countingBytes(20)).substr(16);
    cipher.setKeySize(128, kAesCbc);
    EXPECT_EQ(cipher.encrypt(countingBytes(320)), encryptor(kAesCbc, kKey, shortChain).encrypt(countingBytes(320)));
}

TEST(AesCipher, StartsWithTheNumbersForAKeyOf128BitsInCbc) {
    const AesCipher cipher;
    EXPECT_EQ(cipher.mode, 0U);
    EXPECT_EQ(cipher.blockWords, 4);
    EXPECT_EQ(cipher.keyWords, 4);
    EXPECT_EQ(cipher.rounds, 10);
    EXPECT_EQ(cipher.chain, "");
}

TEST(AesCipher, TakesKeysOf128And192And256Bits) {
    AesCipher cipher;
    for (const int keyBits : {128, 192, 256}) {
        cipher.setKeySize(keyBits, kAesCfb);
        EXPECT_EQ(cipher.mode, 1U);
        EXPECT_EQ(cipher.blockWords, 4);
        EXPECT_EQ(cipher.keyWords, keyBits / 32);
        EXPECT_EQ(cipher.rounds, keyBits / 32 + 6);
    }
}

TEST(AesCipher, ClearsItsNumbersForAnyOtherKeySizeAndGivesNothing) {
    for (const int keyBits : {100, 0, -128, 127, 129, 160, 224, 512}) {
        SCOPED_TRACE(keyBits);
        for (const uint32_t mode : {kAesCbc, kAesCfb}) {
            AesCipher cipher = encryptor(mode, kKey, kIv);
            cipher.setKeySize(keyBits, mode);
            EXPECT_EQ(cipher.blockWords, 0);
            EXPECT_EQ(cipher.keyWords, 0);
            EXPECT_EQ(cipher.rounds, 0);
            EXPECT_EQ(cipher.encrypt(countingBytes(32)), "");
            cipher.initEncrypt(kKey, kIv);
            EXPECT_EQ(cipher.encrypt(countingBytes(32)), "");
            EXPECT_EQ(cipher.encryptBlock(kIv), "");
            cipher.initDecrypt(kKey, kIv);
            EXPECT_EQ(cipher.decrypt(countingBytes(32)), "");
            EXPECT_EQ(cipher.decryptBlock(kIv), "");
        }
    }
}

TEST(AesCipher, GivesNothingInAnyOtherMode) {
    for (const uint32_t mode : {2U, 3U, 0xFFFFFFFFU}) {
        AesCipher cipher = encryptor(mode, kKey, kIv);
        EXPECT_EQ(cipher.encrypt(countingBytes(32)), "");
        EXPECT_EQ(cipher.decrypt(countingBytes(32)), "");
        EXPECT_EQ(cipher.chain, kIv);
        EXPECT_EQ(cipher.encryptBlock(kIv), encryptor(kAesCbc, kKey, kIv).encryptBlock(kIv));
    }
}

TEST(AesCipher, GivesNothingBeforeAKeyIsSet) {
    AesCipher cipher;
    EXPECT_EQ(cipher.encrypt(countingBytes(32)), "");
    EXPECT_EQ(cipher.decrypt(countingBytes(32)), "");
    cipher.setKeySize(256, kAesCfb);
    EXPECT_EQ(cipher.encrypt(countingBytes(32)), "");
    EXPECT_EQ(cipher.encryptBlock(kIv), "");
    EXPECT_EQ(cipher.decryptBlock(kIv), "");
}

TEST(AesCipher, TakesMissingBytesOfKeyAndIvForZero) {
    AesCipher shortOne;
    shortOne.initEncrypt("key", "iv");
    AesCipher fullOne;
    fullOne.initEncrypt("key" + ByteString(13, '\0'), "iv" + ByteString(14, '\0'));
    EXPECT_EQ(shortOne.encrypt(countingBytes(48)), fullOne.encrypt(countingBytes(48)));
}

TEST(AesCipher, TakesTheStartOfALongKeyAndIv) {
    AesCipher longOne;
    longOne.initEncrypt(kKey + "more", kIv + "more");
    EXPECT_EQ(longOne.chain, kIv);
    EXPECT_EQ(longOne.encrypt(countingBytes(48)), encryptor(kAesCbc, kKey, kIv).encrypt(countingBytes(48)));
}

}  // namespace
}  // namespace velmora
