#include <bearssl.h>

#include <array>

#include "benchmarks/crypto_cases.h"

namespace velmora {
namespace {

template <size_t kDigestBytes>
auto KeyedDigest(const br_hash_class* hash, const ByteString& key, const ByteString& data) {
    return [=, &key, &data] {
        std::array<unsigned char, kDigestBytes> digest;
        br_hmac_key_context keyContext;
        br_hmac_context context;
        br_hmac_key_init(&keyContext, hash, key.data(), key.size());
        br_hmac_init(&context, &keyContext, 0);
        br_hmac_update(&context, data.data(), data.size());
        br_hmac_out(&context, digest.data());
        return digest;
    };
}

// The class for processors with AES instructions, or else the one for 64-bit words. It works in place, so the data is
// copied to where the result is wanted.
template <typename Keys, typename Class>
auto AesCbc(const Class* instructions, const Class* portable, const ByteString& key, const ByteString& iv,
            const ByteString& data) {
    const Class* const aes = instructions != nullptr ? instructions : portable;
    Keys keys;
    aes->init(&keys.vtable, key.data(), key.size());
    return [=, &data, last = iv, output = ByteString()]() mutable -> std::string_view {
        output = data;
        aes->run(&keys.vtable, last.data(), output.data(), output.size());
        return output;
    };
}

struct BearSsl {
    static constexpr const char* kName = "BearSSL";

    static auto Md5(const ByteString& data) {
        return [&data] {
            std::array<unsigned char, kMd5Bytes> digest;
            br_md5_context context;
            br_md5_init(&context);
            br_md5_update(&context, data.data(), data.size());
            br_md5_out(&context, digest.data());
            return digest;
        };
    }

    static auto Sha1(const ByteString& data) {
        return [&data] {
            std::array<unsigned char, kSha1Bytes> digest;
            br_sha1_context context;
            br_sha1_init(&context);
            br_sha1_update(&context, data.data(), data.size());
            br_sha1_out(&context, digest.data());
            return digest;
        };
    }

    static auto HmacMd5(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kMd5Bytes>(&br_md5_vtable, key, data);
    }

    static auto HmacSha1(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kSha1Bytes>(&br_sha1_vtable, key, data);
    }

    static auto Prf(const ByteString& secret, const ByteString& seed) {
        return [&] {
            std::array<unsigned char, kPrfBytes> output;
            const br_tls_prf_seed_chunk chunk = {seed.data(), seed.size()};
            br_tls10_prf(output.data(), output.size(), secret.data(), secret.size(), kPrfLabel.c_str(), 1, &chunk);
            return output;
        };
    }

    static auto AesCbcEncrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return AesCbc<br_aes_gen_cbcenc_keys>(br_aes_x86ni_cbcenc_get_vtable(), &br_aes_ct64_cbcenc_vtable, key, iv,
                                              data);
    }

    static auto AesCbcDecrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return AesCbc<br_aes_gen_cbcdec_keys>(br_aes_x86ni_cbcdec_get_vtable(), &br_aes_ct64_cbcdec_vtable, key, iv,
                                              data);
    }
};

}  // namespace

// It has no RC4.
void AddBearSslCrypto() {
    AddCryptoContender<BearSsl>();
}

}  // namespace velmora
