#define OPENSSL_SUPPRESS_DEPRECATED  // RC4 without the provider of outdated algorithms
#include "tests/support/peer_crypto.h"

#include <gtest/gtest.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/kdf.h>
#include <openssl/rc4.h>
#include <openssl/rsa.h>

namespace velmora {
namespace {

const unsigned char* UnsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

unsigned char* UnsignedBytes(ByteString& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

using PeerKey = std::shared_ptr<EVP_PKEY_CTX>;

PeerKey LoadKey(const ByteString& privateKey) {
    const unsigned char* position = UnsignedBytes(privateKey);
    EVP_PKEY* key = d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &position, static_cast<long>(privateKey.size()));
    EXPECT_NE(key, nullptr);
    PeerKey context(EVP_PKEY_CTX_new(key, nullptr), EVP_PKEY_CTX_free);
    EVP_PKEY_free(key);
    return context;
}

}  // namespace

ByteString PeerDigest(const char* hash, const ByteString& data) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(data.data(), data.size(), digest, &length, EVP_get_digestbyname(hash), nullptr);
    return {digest, digest + length};
}

ByteString PeerHmac(const char* hash, const ByteString& key, const ByteString& data) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    HMAC(EVP_get_digestbyname(hash), key.data(), static_cast<int>(key.size()), UnsignedBytes(data), data.size(), digest,
         &length);
    return {digest, digest + length};
}

ByteString PeerTlsPrf(ByteString secret, const ByteString& label, const ByteString& seed, size_t count) {
    const std::unique_ptr<EVP_KDF, decltype(&EVP_KDF_free)> kdf(EVP_KDF_fetch(nullptr, "TLS1-PRF", nullptr),
                                                                EVP_KDF_free);
    const std::unique_ptr<EVP_KDF_CTX, decltype(&EVP_KDF_CTX_free)> context(EVP_KDF_CTX_new(kdf.get()),
                                                                            EVP_KDF_CTX_free);
    char hash[] = "MD5-SHA1";
    ByteString labelSeed = label + seed;
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, hash, 0),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SECRET, secret.data(), secret.size()),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SEED, labelSeed.data(), labelSeed.size()),
        OSSL_PARAM_construct_end(),
    };
    ByteString output(count, '\0');
    EXPECT_EQ(EVP_KDF_derive(context.get(), UnsignedBytes(output), count, parameters), 1);
    return output;
}

ByteString PeerRsaEncrypt(const ByteString& privateKey, const ByteString& secret) {
    const PeerKey key = LoadKey(privateKey);
    ByteString block(1024, '\0');
    size_t length = block.size();
    EXPECT_EQ(EVP_PKEY_encrypt_init(key.get()), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set_rsa_padding(key.get(), RSA_PKCS1_PADDING), 1);
    EXPECT_EQ(EVP_PKEY_encrypt(key.get(), UnsignedBytes(block), &length, UnsignedBytes(secret), secret.size()), 1);
    return block.substr(0, length);
}

ByteString PeerRsaDecrypt(const ByteString& privateKey, const ByteString& block) {
    const PeerKey key = LoadKey(privateKey);
    ByteString secret(1024, '\0');
    size_t length = secret.size();
    EXPECT_EQ(EVP_PKEY_decrypt_init(key.get()), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set_rsa_padding(key.get(), RSA_PKCS1_PADDING), 1);
    if (EVP_PKEY_decrypt(key.get(), UnsignedBytes(secret), &length, UnsignedBytes(block), block.size()) != 1) return {};
    return secret.substr(0, length);
}

PeerCipher::PeerCipher(Way way, const ByteString& key, const ByteString& iv) {
    if (iv.empty()) {
        const auto state = std::make_shared<RC4_KEY>();
        RC4_set_key(state.get(), static_cast<int>(key.size()), UnsignedBytes(key));
        rc4 = state;
        return;
    }
    aes = {EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free};
    EVP_CipherInit_ex(aes.get(), key.size() == 16 ? EVP_aes_128_cbc() : EVP_aes_256_cbc(), nullptr, UnsignedBytes(key),
                      UnsignedBytes(iv), way == Way::kEncrypt ? 1 : 0);
    EVP_CIPHER_CTX_set_padding(aes.get(), 0);
}

ByteString PeerCipher::Process(const ByteString& data) {
    ByteString output(data.size(), '\0');
    if (rc4 != nullptr) {
        RC4(static_cast<RC4_KEY*>(rc4.get()), data.size(), UnsignedBytes(data), UnsignedBytes(output));
        return output;
    }
    int written = 0;
    EVP_CipherUpdate(aes.get(), UnsignedBytes(output), &written, UnsignedBytes(data), static_cast<int>(data.size()));
    EXPECT_EQ(static_cast<size_t>(written), data.size());
    return output;
}

}  // namespace velmora
