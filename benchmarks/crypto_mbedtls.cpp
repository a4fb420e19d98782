#include <mbedtls/aes.h>
#include <mbedtls/arc4.h>
#include <mbedtls/md.h>
#include <mbedtls/md5.h>
#include <mbedtls/sha1.h>
#include <mbedtls/ssl.h>

#include <algorithm>
#include <array>
#include <memory>

#include "benchmarks/crypto_cases.h"

namespace velmora {
namespace {

template <size_t kDigestBytes>
auto KeyedDigest(mbedtls_md_type_t hash, const ByteString& key, const ByteString& data) {
    const std::shared_ptr<mbedtls_md_context_t> context(new mbedtls_md_context_t, [](mbedtls_md_context_t* made) {
        mbedtls_md_free(made);
        delete made;
    });
    mbedtls_md_init(context.get());
    mbedtls_md_setup(context.get(), mbedtls_md_info_from_type(hash), 1);
    return [context, &key, &data] {
        std::array<unsigned char, kDigestBytes> digest;
        mbedtls_md_hmac_starts(context.get(), UnsignedBytes(key), key.size());
        mbedtls_md_hmac_update(context.get(), UnsignedBytes(data), data.size());
        mbedtls_md_hmac_finish(context.get(), digest.data());
        return digest;
    };
}

// A context points into itself, so it stays where it is.
auto AesCbc(int mode, const ByteString& key, const ByteString& iv, const ByteString& data) {
    const auto context = std::make_shared<mbedtls_aes_context>();
    mbedtls_aes_init(context.get());
    const auto keyBits = static_cast<unsigned int>(key.size() * 8);
    if (mode == MBEDTLS_AES_ENCRYPT) mbedtls_aes_setkey_enc(context.get(), UnsignedBytes(key), keyBits);
    if (mode == MBEDTLS_AES_DECRYPT) mbedtls_aes_setkey_dec(context.get(), UnsignedBytes(key), keyBits);
    return [=, &data, last = iv, output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
        mbedtls_aes_crypt_cbc(context.get(), mode, data.size(), UnsignedBytes(last), UnsignedBytes(data),
                              UnsignedBytes(output));
        return output;
    };
}

struct MbedTls {
    static constexpr const char* kName = "Mbed TLS";

    static auto Md5(const ByteString& data) {
        return [&data] {
            std::array<unsigned char, kMd5Bytes> digest;
            mbedtls_md5_ret(UnsignedBytes(data), data.size(), digest.data());
            return digest;
        };
    }

    static auto Sha1(const ByteString& data) {
        return [&data] {
            std::array<unsigned char, kSha1Bytes> digest;
            mbedtls_sha1_ret(UnsignedBytes(data), data.size(), digest.data());
            return digest;
        };
    }

    static auto HmacMd5(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kMd5Bytes>(MBEDTLS_MD_MD5, key, data);
    }

    static auto HmacSha1(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kSha1Bytes>(MBEDTLS_MD_SHA1, key, data);
    }

    static auto Prf(const ByteString& secret, const ByteString& seed) {
        return [&] {
            std::array<unsigned char, kPrfBytes> output;
            mbedtls_ssl_tls_prf(MBEDTLS_SSL_TLS_PRF_TLS1, UnsignedBytes(secret), secret.size(), kPrfLabel.c_str(),
                                UnsignedBytes(seed), seed.size(), output.data(), output.size());
            return output;
        };
    }

    static auto AesCbcEncrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return AesCbc(MBEDTLS_AES_ENCRYPT, key, iv, data);
    }

    static auto AesCbcDecrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return AesCbc(MBEDTLS_AES_DECRYPT, key, iv, data);
    }

    static auto Rc4(const ByteString& key, const ByteString& data) {
        mbedtls_arc4_context context;
        mbedtls_arc4_init(&context);
        mbedtls_arc4_setup(&context, UnsignedBytes(key), static_cast<unsigned int>(key.size()));
        return [context, &data, output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
            mbedtls_arc4_crypt(&context, data.size(), UnsignedBytes(data), UnsignedBytes(output));
            return output;
        };
    }
};

}  // namespace

void AddMbedTlsCrypto() {
    AddCryptoContender<MbedTls>();
}

}  // namespace velmora
