// libcrypto's MD5, SHA-1, HMAC and RC4 are quickest through calls that are declared out of date.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/kdf.h>
#include <openssl/md5.h>
#include <openssl/rc4.h>
#include <openssl/sha.h>

#include <array>
#include <memory>

#include "benchmarks/crypto_cases.h"

namespace velmora {
namespace {

template <size_t kDigestBytes>
auto KeyedDigest(const EVP_MD* hash, const ByteString& key, const ByteString& data) {
    const std::shared_ptr<HMAC_CTX> context(HMAC_CTX_new(), HMAC_CTX_free);
    return [=, &key, &data] {
        std::array<unsigned char, kDigestBytes> digest;
        HMAC_Init_ex(context.get(), key.data(), static_cast<int>(key.size()), hash, nullptr);
        HMAC_Update(context.get(), UnsignedBytes(data), data.size());
        HMAC_Final(context.get(), digest.data(), nullptr);
        return digest;
    };
}

auto AesCbc(bool encrypt, const ByteString& key, const ByteString& iv, const ByteString& data) {
    const std::shared_ptr<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    EVP_CipherInit_ex(context.get(), key.size() == 16 ? EVP_aes_128_cbc() : EVP_aes_256_cbc(), nullptr,
                      UnsignedBytes(key), UnsignedBytes(iv), encrypt ? 1 : 0);
    EVP_CIPHER_CTX_set_padding(context.get(), 0);
    return [context, &data, output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
        int written = 0;
        EVP_CipherUpdate(context.get(), UnsignedBytes(output), &written, UnsignedBytes(data),
                         static_cast<int>(data.size()));
        return output;
    };
}

struct OpenSsl {
    static constexpr const char* kName = "OpenSSL";

    static auto Md5(const ByteString& data) {
        return [&data] {
            std::array<unsigned char, kMd5Bytes> digest;
            MD5_CTX context;
            MD5_Init(&context);
            MD5_Update(&context, data.data(), data.size());
            MD5_Final(digest.data(), &context);
            return digest;
        };
    }

    static auto Sha1(const ByteString& data) {
        return [&data] {
            std::array<unsigned char, kSha1Bytes> digest;
            SHA_CTX context;
            SHA1_Init(&context);
            SHA1_Update(&context, data.data(), data.size());
            SHA1_Final(digest.data(), &context);
            return digest;
        };
    }

    static auto HmacMd5(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kMd5Bytes>(EVP_md5(), key, data);
    }

    static auto HmacSha1(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kSha1Bytes>(EVP_sha1(), key, data);
    }

    static auto Prf(const ByteString& secret, const ByteString& seed) {
        const std::unique_ptr<EVP_KDF, decltype(&EVP_KDF_free)> kdf(EVP_KDF_fetch(nullptr, "TLS1-PRF", nullptr),
                                                                    EVP_KDF_free);
        const std::shared_ptr<EVP_KDF_CTX> context(EVP_KDF_CTX_new(kdf.get()), EVP_KDF_CTX_free);
        return [context, &secret, labelSeed = kPrfLabel + seed]() mutable {
            char hash[] = "MD5-SHA1";
            auto* const secretBytes = const_cast<char*>(secret.data());
            const OSSL_PARAM parameters[] = {
                OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, hash, 0),
                OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SECRET, secretBytes, secret.size()),
                OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SEED, labelSeed.data(), labelSeed.size()),
                OSSL_PARAM_construct_end(),
            };
            std::array<unsigned char, kPrfBytes> output;
            EVP_KDF_CTX_reset(context.get());
            EVP_KDF_derive(context.get(), output.data(), output.size(), parameters);
            return output;
        };
    }

    static auto AesCbcEncrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return AesCbc(true, key, iv, data);
    }

    static auto AesCbcDecrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return AesCbc(false, key, iv, data);
    }

    static auto Rc4(const ByteString& key, const ByteString& data) {
        RC4_KEY state;
        RC4_set_key(&state, static_cast<int>(key.size()), UnsignedBytes(key));
        return [state, &data, output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
            RC4(&state, data.size(), UnsignedBytes(data), UnsignedBytes(output));
            return output;
        };
    }
};

}  // namespace

void AddOpenSslCrypto() {
    AddCryptoContender<OpenSsl>();
}

}  // namespace velmora
