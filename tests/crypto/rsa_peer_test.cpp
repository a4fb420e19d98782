// RSA beside libcrypto, with keys that it makes.
#include <gtest/gtest.h>
#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>
#include <string>
#include <vector>

#include "crypto/rsa.h"
#include "crypto/rsa_private_key.h"
#include "tests/support/hex.h"

namespace velmora {
namespace {

struct Free {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
    void operator()(BIGNUM* number) const { BN_free(number); }
};
using KeyPointer = std::unique_ptr<EVP_PKEY, Free>;
using ContextPointer = std::unique_ptr<EVP_PKEY_CTX, Free>;
using NumberPointer = std::unique_ptr<BIGNUM, Free>;

unsigned char* unsignedBytes(ByteString& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

const unsigned char* unsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

KeyPointer generateKey(int bits, unsigned long exponent) {
    const ContextPointer context(EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr));
    const NumberPointer e(BN_new());
    EVP_PKEY* key = nullptr;
    EXPECT_EQ(BN_set_word(e.get(), exponent), 1);
    EXPECT_EQ(EVP_PKEY_keygen_init(context.get()), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set_rsa_keygen_bits(context.get(), bits), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set1_rsa_keygen_pubexp(context.get(), e.get()), 1);
    EXPECT_EQ(EVP_PKEY_keygen(context.get(), &key), 1);
    return KeyPointer(key);
}

// RSAPrivateKey in DER, as libcrypto writes it.
ByteString derOf(const KeyPointer& key) {
    ByteString der(static_cast<size_t>(i2d_PrivateKey(key.get(), nullptr)), '\0');
    unsigned char* end = unsignedBytes(der);
    i2d_PrivateKey(key.get(), &end);
    return der;
}

RsaKey ourKey(const KeyPointer& key) {
    const RsaPrivateKeyNumbers numbers = readRsaPrivateKey(derOf(key));
    RsaKey ours;
    setPrivateKey(ours, numbers.privateExponent, numbers.publicExponent, numbers.modulus, numbers.prime1,
                  numbers.prime2);
    return ours;
}

using Initialise = int (*)(EVP_PKEY_CTX*);
using Operate = int (*)(EVP_PKEY_CTX*, unsigned char*, size_t*, const unsigned char*, size_t);

ByteString theirs(const KeyPointer& key, Initialise initialise, Operate operate, int padding, const ByteString& input) {
    const ContextPointer context(EVP_PKEY_CTX_new(key.get(), nullptr));
    ByteString result(static_cast<size_t>(EVP_PKEY_get_size(key.get())), '\0');
    size_t length = result.size();
    EXPECT_EQ(initialise(context.get()), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set_rsa_padding(context.get(), padding), 1);
    EXPECT_EQ(operate(context.get(), unsignedBytes(result), &length, unsignedBytes(input), input.size()), 1);
    result.resize(length);
    return result;
}

// What libcrypto gives at the modulus's length, in as many bytes as we give.
ByteString inOurLength(const ByteString& bytes, const ByteString& ours) {
    if (bytes.size() <= ours.size()) return toHex(bytes);
    EXPECT_EQ(bytes.find_first_not_of('\0') >= bytes.size() - ours.size(), true) << toHex(bytes);
    return toHex(bytes.substr(bytes.size() - ours.size()));
}

// Blocks below the modulus: the smallest, the greatest and some in between.
std::vector<ByteString> blocksFor(const RsaKey& key) {
    const ByteString greatest = toBytes(subtract(key.n, kBigIntOne), 0);
    std::vector<ByteString> blocks = {ByteString(greatest.size() - 1, '\0') + '\x01', greatest};
    for (int seed = 1; seed <= 20; ++seed) {
        ByteString block;
        for (size_t index = 0; index < greatest.size(); ++index) {
            block += static_cast<char>(index == 0 ? 0 : index * static_cast<size_t>(seed) * 37 + (index >> 2));
        }
        blocks.push_back(block);
    }
    return blocks;
}

void expectTheSame(int bits, unsigned long exponent) {
    SCOPED_TRACE(std::to_string(bits) + " bits, exponent " + std::to_string(exponent));
    const KeyPointer key = generateKey(bits, exponent);
    ASSERT_NE(key, nullptr);
    const RsaKey ours = ourKey(key);
    for (const ByteString& block : blocksFor(ours)) {
        SCOPED_TRACE(toHex(block) + " with the key " + toHex(derOf(key)));
        const ByteString encrypted = rsaPublic(ours, block);
        ASSERT_EQ(toHex(encrypted),
                  inOurLength(theirs(key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, RSA_NO_PADDING, block), encrypted));
        const ByteString decrypted = rsaPrivate(ours, block);
        ASSERT_EQ(toHex(decrypted),
                  inOurLength(theirs(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, RSA_NO_PADDING, block), decrypted));
    }
}

TEST(RsaPeer, EncryptsAndDecryptsLikeLibcrypto) {
    for (const int bits : {512, 513, 600, 767, 768, 1000, 1023, 1024, 1025, 1100, 1536, 2048})
        expectTheSame(bits, 65537);
    for (const int bits : {512, 1024, 1025, 2048}) expectTheSame(bits, 3);
}

TEST(RsaPeer, EncryptsAndDecryptsLikeLibcryptoWithLongKeys) {
    expectTheSame(3072, 3);
    expectTheSame(4096, 65537);
}

TEST(RsaPeer, DecryptsWithManyKeys) {
    for (int round = 0; round < 60; ++round) expectTheSame(512 + 8 * round, round % 2 == 0 ? 65537 : 17);
}

TEST(RsaPeer, SignsLikeLibcrypto) {
    for (int round = 0; round < 20; ++round) {
        const KeyPointer key = generateKey(1024, 65537);
        const RsaKey ours = ourKey(key);
        for (const size_t byteCount : {0U, 1U, 20U, 36U, 100U, 117U}) {
            const ByteString data(byteCount, static_cast<char>('a' + round));
            const ByteString expected = theirs(key, EVP_PKEY_sign_init, EVP_PKEY_sign, RSA_PKCS1_PADDING, data);
            const ByteString signature = rsaSign(ours, data);
            ASSERT_EQ(toHex(signature), inOurLength(expected, signature));
            ASSERT_EQ(toHex(rsaVerifyRaw(toBytes(ours.e, 0), toBytes(ours.n, 0), expected)),
                      toHex('\x01' + ByteString(125 - byteCount, '\xFF') + '\0' + data));
        }
    }
}

// What libcrypto derives from the primes, we do too.
TEST(RsaPeer, ReadsAndDerivesTheNumbersOfAKey) {
    for (const int bits : {512, 1024, 2048}) {
        const KeyPointer key = generateKey(bits, 65537);
        const RsaKey ours = ourKey(key);
        const auto number = [&](const char* name) {
            BIGNUM* value = nullptr;
            EVP_PKEY_get_bn_param(key.get(), name, &value);
            const NumberPointer owner(value);
            ByteString bytes(static_cast<size_t>(BN_num_bytes(value)), '\0');
            BN_bn2bin(value, unsignedBytes(bytes));
            return fromBytes(bytes);
        };
        EXPECT_EQ(ours.n, number("n"));
        EXPECT_EQ(ours.e, number("e"));
        EXPECT_EQ(ours.d, number("d"));
        EXPECT_EQ(ours.p, number("rsa-factor1"));
        EXPECT_EQ(ours.q, number("rsa-factor2"));
        EXPECT_EQ(ours.dP, number("rsa-exponent1"));
        EXPECT_EQ(ours.dQ, number("rsa-exponent2"));
        EXPECT_EQ(ours.qCoefficient, multiply(number("rsa-coefficient1"), ours.q));
    }
}

}  // namespace
}  // namespace velmora
