#include <nettle/aes.h>
#include <nettle/arcfour.h>
#include <nettle/cbc.h>
#include <nettle/hmac.h>
#include <nettle/md5.h>
#include <nettle/nettle-meta.h>
#include <nettle/sha1.h>

#include <algorithm>
#include <array>

#include "benchmarks/crypto_cases.h"

namespace velmora {
namespace {

using Iv = std::array<unsigned char, kAesIvBytes>;

Iv IvOf(const ByteString& bytes) {
    Iv iv;
    std::copy_n(UnsignedBytes(bytes), iv.size(), iv.begin());
    return iv;
}

// A key of either length, and the last block of the stream so far.
struct AesStream {
    aes128_ctx key128;
    aes256_ctx key256;
    bool is128;
    Iv iv;
};

struct Nettle {
    static constexpr const char* kName = "nettle";

    static auto Md5(const ByteString& data) {
        return [&data] {
            std::array<unsigned char, kMd5Bytes> digest;
            md5_ctx context;
            md5_init(&context);
            md5_update(&context, data.size(), UnsignedBytes(data));
            md5_digest(&context, digest.size(), digest.data());
            return digest;
        };
    }

    static auto Sha1(const ByteString& data) {
        return [&data] {
            std::array<unsigned char, kSha1Bytes> digest;
            sha1_ctx context;
            sha1_init(&context);
            sha1_update(&context, data.size(), UnsignedBytes(data));
            sha1_digest(&context, digest.size(), digest.data());
            return digest;
        };
    }

    static auto HmacMd5(const ByteString& key, const ByteString& data) {
        return [&] {
            std::array<unsigned char, kMd5Bytes> digest;
            hmac_md5_ctx context;
            hmac_md5_set_key(&context, key.size(), UnsignedBytes(key));
            hmac_md5_update(&context, data.size(), UnsignedBytes(data));
            hmac_md5_digest(&context, digest.size(), digest.data());
            return digest;
        };
    }

    static auto HmacSha1(const ByteString& key, const ByteString& data) {
        return [&] {
            std::array<unsigned char, kSha1Bytes> digest;
            hmac_sha1_ctx context;
            hmac_sha1_set_key(&context, key.size(), UnsignedBytes(key));
            hmac_sha1_update(&context, data.size(), UnsignedBytes(data));
            hmac_sha1_digest(&context, digest.size(), digest.data());
            return digest;
        };
    }

    static auto AesCbcEncrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        AesStream stream = {{}, {}, key.size() == AES128_KEY_SIZE, IvOf(iv)};
        if (stream.is128) aes128_set_encrypt_key(&stream.key128, UnsignedBytes(key));
        if (!stream.is128) aes256_set_encrypt_key(&stream.key256, UnsignedBytes(key));
        return [stream, &data, output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
            unsigned char* const target = UnsignedBytes(output);
            if (stream.is128) {
                cbc_aes128_encrypt(&stream.key128, stream.iv.data(), data.size(), target, UnsignedBytes(data));
            } else {
                cbc_aes256_encrypt(&stream.key256, stream.iv.data(), data.size(), target, UnsignedBytes(data));
            }
            return output;
        };
    }

    static auto AesCbcDecrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        AesStream stream = {{}, {}, key.size() == AES128_KEY_SIZE, IvOf(iv)};
        if (stream.is128) aes128_set_decrypt_key(&stream.key128, UnsignedBytes(key));
        if (!stream.is128) aes256_set_decrypt_key(&stream.key256, UnsignedBytes(key));
        return [stream, &data, output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
            const nettle_cipher& aes = stream.is128 ? nettle_aes128 : nettle_aes256;
            const void* const context = stream.is128 ? static_cast<void*>(&stream.key128) : &stream.key256;
            cbc_decrypt(context, aes.decrypt, AES_BLOCK_SIZE, stream.iv.data(), data.size(), UnsignedBytes(output),
                        UnsignedBytes(data));
            return output;
        };
    }

    static auto Rc4(const ByteString& key, const ByteString& data) {
        arcfour_ctx context;
        arcfour_set_key(&context, key.size(), UnsignedBytes(key));
        return [context, &data, output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
            arcfour_crypt(&context, data.size(), UnsignedBytes(output), UnsignedBytes(data));
            return output;
        };
    }
};

}  // namespace

// It has no pseudo-random function of TLS.
void AddNettleCrypto() {
    AddCryptoContender<Nettle>();
}

}  // namespace velmora
