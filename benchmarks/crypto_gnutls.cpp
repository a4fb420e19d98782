#include <gnutls/crypto.h>
#include <gnutls/gnutls.h>

#include <array>
#include <memory>
#include <type_traits>

#include "benchmarks/crypto_cases.h"

namespace velmora {
namespace {

using Cipher = std::shared_ptr<std::remove_pointer_t<gnutls_cipher_hd_t>>;

Cipher CipherFor(gnutls_cipher_algorithm_t algorithm, ByteString key, ByteString iv) {
    gnutls_cipher_hd_t cipher = nullptr;
    const gnutls_datum_t keyDatum = {UnsignedBytes(key), static_cast<unsigned int>(key.size())};
    const gnutls_datum_t ivDatum = {UnsignedBytes(iv), static_cast<unsigned int>(iv.size())};
    gnutls_cipher_init(&cipher, algorithm, &keyDatum, iv.empty() ? nullptr : &ivDatum);
    return {cipher, gnutls_cipher_deinit};
}

template <size_t kDigestBytes>
auto Digest(gnutls_digest_algorithm_t algorithm, const ByteString& data) {
    return [algorithm, &data] {
        std::array<unsigned char, kDigestBytes> digest;
        gnutls_hash_fast(algorithm, data.data(), data.size(), digest.data());
        return digest;
    };
}

template <size_t kDigestBytes>
auto KeyedDigest(gnutls_mac_algorithm_t algorithm, const ByteString& key, const ByteString& data) {
    return [algorithm, &key, &data] {
        std::array<unsigned char, kDigestBytes> digest;
        gnutls_hmac_fast(algorithm, key.data(), key.size(), data.data(), data.size(), digest.data());
        return digest;
    };
}

auto Encryption(const Cipher& cipher, const ByteString& data) {
    return [cipher, &data, output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
        gnutls_cipher_encrypt2(cipher.get(), data.data(), data.size(), output.data(), output.size());
        return output;
    };
}

gnutls_cipher_algorithm_t AesCbc(const ByteString& key) {
    return key.size() == 16 ? GNUTLS_CIPHER_AES_128_CBC : GNUTLS_CIPHER_AES_256_CBC;
}

struct GnuTls {
    static constexpr const char* kName = "GnuTLS";

    static auto Md5(const ByteString& data) { return Digest<kMd5Bytes>(GNUTLS_DIG_MD5, data); }

    static auto Sha1(const ByteString& data) { return Digest<kSha1Bytes>(GNUTLS_DIG_SHA1, data); }

    static auto HmacMd5(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kMd5Bytes>(GNUTLS_MAC_MD5, key, data);
    }

    static auto HmacSha1(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kSha1Bytes>(GNUTLS_MAC_SHA1, key, data);
    }

    static auto AesCbcEncrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return Encryption(CipherFor(AesCbc(key), key, iv), data);
    }

    static auto AesCbcDecrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return [cipher = CipherFor(AesCbc(key), key, iv), &data,
                output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
            gnutls_cipher_decrypt2(cipher.get(), data.data(), data.size(), output.data(), output.size());
            return output;
        };
    }

    static auto Rc4(const ByteString& key, const ByteString& data) {
        return Encryption(CipherFor(GNUTLS_CIPHER_ARCFOUR_128, key, {}), data);
    }
};

}  // namespace

// Its pseudo-random function is not for others.
void AddGnuTlsCrypto() {
    AddCryptoContender<GnuTls>();
}

}  // namespace velmora
