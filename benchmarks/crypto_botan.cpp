#include <botan/cipher_mode.h>
#include <botan/hash.h>
#include <botan/kdf.h>
#include <botan/mac.h>
#include <botan/stream_cipher.h>

#include <array>
#include <memory>

#include "benchmarks/crypto_cases.h"

namespace velmora {
namespace {

template <size_t kDigestBytes>
auto Digest(const char* hash, const ByteString& data) {
    return [context = std::shared_ptr<Botan::HashFunction>(Botan::HashFunction::create_or_throw(hash)), &data] {
        std::array<unsigned char, kDigestBytes> digest;
        context->update(UnsignedBytes(data), data.size());
        context->final(digest.data());
        return digest;
    };
}

template <size_t kDigestBytes>
auto KeyedDigest(const char* mac, const ByteString& key, const ByteString& data) {
    using Mac = Botan::MessageAuthenticationCode;
    return [context = std::shared_ptr<Mac>(Mac::create_or_throw(mac)), &key, &data] {
        std::array<unsigned char, kDigestBytes> digest;
        context->set_key(UnsignedBytes(key), key.size());
        context->update(UnsignedBytes(data), data.size());
        context->final(digest.data());
        return digest;
    };
}

// It works in place, so the data is copied to where the result is wanted.
auto AesCbc(Botan::Cipher_Dir direction, const ByteString& key, const ByteString& iv, const ByteString& data) {
    const std::shared_ptr<Botan::Cipher_Mode> context = Botan::Cipher_Mode::create_or_throw(
        key.size() == 16 ? "AES-128/CBC/NoPadding" : "AES-256/CBC/NoPadding", direction);
    context->set_key(UnsignedBytes(key), key.size());
    context->start(UnsignedBytes(iv), iv.size());
    return [context, &data, output = ByteString()]() mutable -> std::string_view {
        output = data;
        context->process(UnsignedBytes(output), output.size());
        return output;
    };
}

struct Botan2 {
    static constexpr const char* kName = "Botan";

    static auto Md5(const ByteString& data) { return Digest<kMd5Bytes>("MD5", data); }

    static auto Sha1(const ByteString& data) { return Digest<kSha1Bytes>("SHA-1", data); }

    static auto HmacMd5(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kMd5Bytes>("HMAC(MD5)", key, data);
    }

    static auto HmacSha1(const ByteString& key, const ByteString& data) {
        return KeyedDigest<kSha1Bytes>("HMAC(SHA-1)", key, data);
    }

    static auto Prf(const ByteString& secret, const ByteString& seed) {
        return [kdf = std::shared_ptr<Botan::KDF>(Botan::KDF::create_or_throw("TLS-PRF")), &secret, &seed] {
            std::array<unsigned char, kPrfBytes> output = {};  // it combines its bytes with these
            kdf->kdf(output.data(), output.size(), UnsignedBytes(secret), secret.size(), UnsignedBytes(seed),
                     seed.size(), UnsignedBytes(kPrfLabel), kPrfLabel.size());
            return output;
        };
    }

    static auto AesCbcEncrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return AesCbc(Botan::ENCRYPTION, key, iv, data);
    }

    static auto AesCbcDecrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        return AesCbc(Botan::DECRYPTION, key, iv, data);
    }

    static auto Rc4(const ByteString& key, const ByteString& data) {
        const std::shared_ptr<Botan::StreamCipher> context = Botan::StreamCipher::create_or_throw("RC4");
        context->set_key(UnsignedBytes(key), key.size());
        return [context, &data, output = ByteString(data.size(), '\0')]() mutable -> std::string_view {
            context->cipher(UnsignedBytes(data), UnsignedBytes(output), data.size());
            return output;
        };
    }
};

}  // namespace

void AddBotanCrypto() {
    AddCryptoContender<Botan2>();
}

}  // namespace velmora
