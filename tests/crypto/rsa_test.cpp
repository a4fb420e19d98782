#include "crypto/rsa.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/hex.h"
#include "tests/support/rsa_vectors.h"

namespace velmora {
namespace {

// In hexadecimal, without zero bytes at the start: the published values have the modulus's length.
ByteString valueOf(const ByteString& bytes) {
    return toHex(bytes.substr(std::min(bytes.find_first_not_of('\0'), bytes.size())));
}

TEST(RsaPublic, GivesThePublishedEncryptions) {
    for (const RsaEncryptionVector& vector : kRsaEncryptionVectors) {
        SCOPED_TRACE(vector.source);
        RsaKey key;
        setPublicKey(key, fromHex(vector.key.publicExponent), fromHex(vector.key.modulus));
        EXPECT_EQ(valueOf(rsaPublic(key, fromHex(vector.block))), valueOf(fromHex(vector.encryption)));
    }
}

TEST(RsaPrivate, GivesThePublishedBlocks) {
    for (const RsaEncryptionVector& vector : kRsaEncryptionVectors) {
        SCOPED_TRACE(vector.source);
        EXPECT_EQ(valueOf(rsaPrivate(rsaKey(vector.key), fromHex(vector.encryption))), valueOf(fromHex(vector.block)));
    }
}

TEST(RsaPrivate, WorksThroughDAndNWithoutPrimes) {
    for (const RsaEncryptionVector& vector : kRsaEncryptionVectors) {
        SCOPED_TRACE(vector.source);
        RsaKey key;
        setPrivateKey(key, fromHex(vector.key.privateExponent), fromHex(vector.key.publicExponent),
                      fromHex(vector.key.modulus), "", "");
        EXPECT_EQ(key.dP, kBigIntZero);
        EXPECT_EQ(valueOf(rsaPrivate(key, fromHex(vector.encryption))), valueOf(fromHex(vector.block)));
    }
}

TEST(RsaPrivate, WorksThroughDAndNForAPrimeOfOne) {
    const RsaEncryptionVector& vector = kRsaEncryptionVectors[0];
    RsaKey key;
    setPrivateKey(key, fromHex(vector.key.privateExponent), fromHex(vector.key.publicExponent),
                  fromHex(vector.key.modulus), "\x01", fromHex(vector.key.modulus));
    EXPECT_EQ(valueOf(rsaPrivate(key, fromHex(vector.encryption))), valueOf(fromHex(vector.block)));
}

TEST(RsaPrivate, GivesBackWhatRsaPublicTookInAtItsLength) {
    const RsaKey key = rsaKey(kSigningKey);
    for (const char* start : {"01", "7f", "0001", "000001", "00000001"}) {
        SCOPED_TRACE(start);
        ByteString block = fromHex(start);
        block.append(128 - block.size(), '\xA5');
        EXPECT_EQ(toHex(rsaPrivate(key, rsaPublic(key, block))), toHex(block));
    }
}

// A modulus of 1025 bits has 129 bytes, and nearly every number below it only 128.
TEST(RsaPublic, GivesAShortResultInWholeLimbs) {
    const RsaEncryptionVector& vector = kRsaEncryptionVectors[2];
    EXPECT_EQ(rsaPublic(rsaKey(vector.key), fromHex(vector.block)).size(), 128U);
    EXPECT_EQ(fromHex(vector.encryption).size(), 129U);
}

TEST(RsaPrivate, GivesAShortResultInWholeLimbs) {
    const RsaKey key = rsaKey(kSigningKey);
    const ByteString block = ByteString(5, '\0') + ByteString(123, '\xA5');
    EXPECT_EQ(toHex(rsaPrivate(key, rsaPublic(key, block))), toHex(block.substr(4)));
    EXPECT_EQ(toHex(rsaPrivate(key, ByteString(127, '\0') + "\x01")), "00000001");
    EXPECT_EQ(rsaPrivate(key, ByteString(128, '\0')), "");
    EXPECT_EQ(rsaPrivate(key, ""), "");
}

TEST(SetPrivateKey, DerivesThePublishedExponents) {
    for (const RsaEncryptionVector& vector : kRsaEncryptionVectors) {
        SCOPED_TRACE(vector.source);
        const RsaKey key = rsaKey(vector.key);
        EXPECT_EQ(key.dP, fromBytes(fromHex(vector.key.primeExponent1)));
        EXPECT_EQ(key.dQ, fromBytes(fromHex(vector.key.primeExponent2)));
    }
}

TEST(SetPrivateKey, DerivesTheCoefficientsInGaussForm) {
    const RsaKey key = rsaKey(kSigningKey);
    EXPECT_EQ(mod(key.qCoefficient, key.p), kBigIntOne);
    EXPECT_EQ(mod(key.qCoefficient, key.q), kBigIntZero);
    EXPECT_EQ(mod(key.pCoefficient, key.p), kBigIntZero);
    EXPECT_EQ(mod(key.pCoefficient, key.q), kBigIntOne);
    EXPECT_TRUE(compareMagnitude(key.n, key.qCoefficient));
    EXPECT_TRUE(compareMagnitude(key.n, key.pCoefficient));
}

TEST(SetPrivateKey, LeavesTheDerivedFieldsZeroWithoutPrimes) {
    RsaKey key = rsaKey(kSigningKey);
    setPrivateKey(key, "\x05", "\x03", "\x21", "", "\x03");
    EXPECT_EQ(key.d, BigInt(5));
    EXPECT_EQ(key.e, BigInt(3));
    EXPECT_EQ(key.n, BigInt(33));
    EXPECT_EQ(key.p, kBigIntZero);
    EXPECT_EQ(key.q, BigInt(3));
    for (const BigInt& derived : {key.dP, key.dQ, key.qCoefficient, key.pCoefficient}) {
        EXPECT_EQ(derived, kBigIntZero);
    }
}

TEST(SetPublicKey, SetsTheExponentAndTheModulusAlone) {
    RsaKey key = rsaKey(kSigningKey);
    setPublicKey(key, fromHex("00010001"), fromHex("00c5"));
    EXPECT_EQ(key.e, BigInt(65537));
    EXPECT_EQ(key.n, BigInt(0xC5));
    for (const BigInt& other : {key.d, key.p, key.q, key.dQ, key.dP, key.qCoefficient, key.pCoefficient}) {
        EXPECT_EQ(other, kBigIntZero);
    }
}

TEST(RsaSign, GivesThePublishedSignatures) {
    const RsaKey key = rsaKey(kSigningKey);
    for (const RsaSignatureVector& vector : kRsaSignatureVectors) {
        SCOPED_TRACE(vector.source);
        EXPECT_EQ(toHex(rsaSign(key, fromHex(vector.data))), vector.signature);
    }
}

ByteString verified(const ByteString& signature) {
    return rsaVerifyRaw(fromHex(kSigningKey.publicExponent), fromHex(kSigningKey.modulus), signature);
}

TEST(RsaSign, PadsToABlockOf128Bytes) {
    const RsaKey key = rsaKey(kSigningKey);
    const ByteString data(36, 'd');
    const ByteString signature = rsaSign(key, data);
    EXPECT_EQ(signature.size(), 128U);
    EXPECT_EQ(toHex(rsaPublic(key, signature)), toHex(ByteString("\0\x01", 2) + ByteString(89, '\xFF') + '\0' + data));
}

TEST(RsaSign, TakesFrom0To125Bytes) {
    const RsaKey key = rsaKey(kSigningKey);
    for (const size_t byteCount : {0U, 1U, 124U, 125U}) {
        SCOPED_TRACE(byteCount);
        const ByteString data(byteCount, 'd');
        EXPECT_EQ(toHex(verified(rsaSign(key, data))),
                  toHex("\x01" + ByteString(125 - byteCount, '\xFF') + '\0' + data));
    }
}

TEST(RsaSign, RefusesMoreThan125Bytes) {
    const RsaKey key = rsaKey(kSigningKey);
    EXPECT_EQ(rsaSign(key, ByteString(126, 'd')), "");
    EXPECT_EQ(rsaSign(key, ByteString(128, 'd')), "");
    EXPECT_EQ(rsaSign(key, ByteString(1000, 'd')), "");
}

// The signature is as long as the modulus, what is signed is 128 bytes long.
TEST(RsaSign, PadsTo128BytesForALongerKeyToo) {
    const RsaEncryptionVector& vector = kRsaEncryptionVectors[4];
    const ByteString signature = rsaSign(rsaKey(vector.key), "data");
    EXPECT_EQ(signature.size(), 256U);
    EXPECT_EQ(toHex(rsaVerifyRaw(fromHex(vector.key.publicExponent), fromHex(vector.key.modulus), signature)),
              toHex("\x01" + ByteString(121, '\xFF') + ByteString("\0data", 5)));
}

TEST(RsaSign, CannotSignWithoutPrimes) {
    RsaKey key;
    setPrivateKey(key, fromHex(kSigningKey.privateExponent), fromHex(kSigningKey.publicExponent),
                  fromHex(kSigningKey.modulus), "", "");
    EXPECT_EQ(rsaSign(key, "data"), "");
    EXPECT_EQ(rsaSign(RsaKey(), "data"), "");
}

TEST(RsaVerifyRaw, GivesTheBlockWithoutItsLeadingZero) {
    for (const RsaSignatureVector& vector : kRsaSignatureVectors) {
        SCOPED_TRACE(vector.source);
        const ByteString data = fromHex(vector.data);
        EXPECT_EQ(toHex(verified(fromHex(vector.signature))),
                  toHex("\x01" + ByteString(125 - data.size(), '\xFF') + '\0' + data));
    }
}

TEST(RsaVerifyRaw, DropsEveryZeroByteAtTheStart) {
    // 2^3 mod 33
    EXPECT_EQ(toHex(rsaVerifyRaw(fromHex("0003"), fromHex("000021"), fromHex("0000000002"))), "08");
    EXPECT_EQ(rsaVerifyRaw(fromHex("03"), fromHex("21"), fromHex("21")), "");
}

TEST(Rsa, EndsForKeysThatAreNone) {
    const ByteString block(128, 'b');
    EXPECT_EQ(rsaVerifyRaw("", "", block), fromHex("01"));
    EXPECT_EQ(rsaVerifyRaw("\x03", "", block), "");
    EXPECT_EQ(rsaVerifyRaw("\x03", "\x01", block), "");
    EXPECT_EQ(rsaVerifyRaw("\x03", "\x02", block), "");
    EXPECT_EQ(rsaPublic(RsaKey(), block), fromHex("00000001"));
    EXPECT_EQ(rsaPrivate(RsaKey(), block), fromHex("00000001"));

    // Primes that are none: even, equal, with a common divisor.
    for (const char* p : {"02", "04", "21", "ff"}) {
        for (const char* q : {"00", "01", "02", "04", "21", "ff"}) {
            SCOPED_TRACE(ByteString(p) + " and " + q);
            RsaKey key;
            setPrivateKey(key, "\x05", "\x03", fromHex("0100000021"), fromHex(p), fromHex(q));
            EXPECT_LE(rsaPrivate(key, block).size(), 128U);
            EXPECT_LE(rsaSign(key, "data").size(), 8U);
        }
    }
}

}  // namespace
}  // namespace velmora
