#define OPENSSL_SUPPRESS_DEPRECATED  // RC4 without the provider of outdated algorithms
#include "fuzzing/support/libcrypto_judge.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rc4.h>

#include <memory>

#include "fuzzing/support/expect.h"

namespace velmora {
namespace {

const unsigned char* Unsigned(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

unsigned char* Unsigned(ByteString& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

// Looked up once: that takes longer than a digest.
const EVP_MD* Hash(const char* hash) {
    static const EVP_MD* const md5 = EVP_MD_fetch(nullptr, "MD5", nullptr);
    static const EVP_MD* const sha1 = EVP_MD_fetch(nullptr, "SHA1", nullptr);
    return hash[0] == 'M' ? md5 : sha1;
}

const EVP_CIPHER* Cipher(bool cfb, size_t keyBytes) {
    if (cfb) {
        return keyBytes == 16 ? EVP_aes_128_cfb128() : keyBytes == 24 ? EVP_aes_192_cfb128() : EVP_aes_256_cfb128();
    }
    return keyBytes == 16 ? EVP_aes_128_cbc() : keyBytes == 24 ? EVP_aes_192_cbc() : EVP_aes_256_cbc();
}

}  // namespace

ByteString JudgesDigest(const char* hash, const ByteString& data) {
    ByteString digest(EVP_MAX_MD_SIZE, '\0');
    unsigned digestBytes = 0;
    Expect(EVP_Digest(data.data(), data.size(), Unsigned(digest), &digestBytes, Hash(hash), nullptr) == 1,
           "libcrypto has the hash");
    digest.resize(digestBytes);
    return digest;
}

ByteString JudgesHmac(const char* hash, const ByteString& key, const ByteString& data) {
    ByteString digest(EVP_MAX_MD_SIZE, '\0');
    unsigned digestBytes = 0;
    HMAC(Hash(hash), key.data(), static_cast<int>(key.size()), Unsigned(data), data.size(), Unsigned(digest),
         &digestBytes);
    digest.resize(digestBytes);
    return digest;
}

ByteString JudgesAes(bool encrypt, bool cfb, const ByteString& key, const ByteString& iv, const ByteString& data) {
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                  EVP_CIPHER_CTX_free);
    EVP_CipherInit_ex(context.get(), Cipher(cfb, key.size()), nullptr, Unsigned(key), Unsigned(iv), encrypt ? 1 : 0);
    EVP_CIPHER_CTX_set_padding(context.get(), 0);
    ByteString output(data.size(), '\0');
    int written = 0;
    EVP_CipherUpdate(context.get(), Unsigned(output), &written, Unsigned(data), static_cast<int>(data.size()));
    Expect(static_cast<size_t>(written) == data.size(), "libcrypto takes the data");
    return output;
}

ByteString JudgesRc4(const ByteString& key, const ByteString& data) {
    RC4_KEY state;
    RC4_set_key(&state, static_cast<int>(key.size()), Unsigned(key));
    ByteString output(data.size(), '\0');
    RC4(&state, data.size(), Unsigned(data), Unsigned(output));
    return output;
}

}  // namespace velmora
