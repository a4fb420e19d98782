// Hashes and ciphers beside libcrypto's, each reached with the least detour that libcrypto offers, and its contexts
// made beforehand: what is compared is the work on the bytes. Ours includes the string that it returns.

// libcrypto's MD5, SHA-1, HMAC and RC4 are quickest through calls that are declared out of date.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <nettle/arcfour.h>
#include <nettle/hmac.h>
#include <nettle/md5.h>
#include <nettle/sha1.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/kdf.h>
#include <openssl/md5.h>
#include <openssl/rc4.h>
#include <openssl/sha.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "benchmarks/ratio_table.h"
#include "crypto/aes.h"
#include "crypto/hmac.h"
#include "crypto/md5.h"
#include "crypto/prf.h"
#include "crypto/rc4.h"
#include "crypto/sha1.h"

namespace velmora {
namespace {

const std::string kLibcrypto = "libcrypto";
const std::string kNettle = "nettle";

// Bytes without a pattern that anything could profit from.
ByteString someBytes(size_t count) {
    ByteString bytes;
    uint32_t state = 1;
    while (bytes.size() < count) bytes += static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

const unsigned char* unsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

void addMd5(size_t byteCount) {
    const ByteString data = someBytes(byteCount);
    const std::string caseName = std::to_string(byteCount);
    AddContender("md5", caseName, kOurs, [data] { benchmark::DoNotOptimize(md5Digest(data)); });
    AddContender("md5", caseName, kLibcrypto, [data] {
        MD5_CTX context;
        unsigned char digest[MD5_DIGEST_LENGTH];
        MD5_Init(&context);
        MD5_Update(&context, data.data(), data.size());
        MD5_Final(digest, &context);
        benchmark::DoNotOptimize(digest);
    });
    AddContender("md5", caseName, kNettle, [data] {
        md5_ctx context;
        unsigned char digest[MD5_DIGEST_SIZE];
        md5_init(&context);
        md5_update(&context, data.size(), unsignedBytes(data));
        md5_digest(&context, sizeof digest, digest);
        benchmark::DoNotOptimize(digest);
    });
}

void addSha1(size_t byteCount) {
    const ByteString data = someBytes(byteCount);
    const std::string caseName = std::to_string(byteCount);
    AddContender("sha1", caseName, kOurs, [data] { benchmark::DoNotOptimize(sha1Digest(data)); });
    AddContender("sha1", caseName, kLibcrypto, [data] {
        SHA_CTX context;
        unsigned char digest[SHA_DIGEST_LENGTH];
        SHA1_Init(&context);
        SHA1_Update(&context, data.data(), data.size());
        SHA1_Final(digest, &context);
        benchmark::DoNotOptimize(digest);
    });
    AddContender("sha1", caseName, kNettle, [data] {
        sha1_ctx context;
        unsigned char digest[SHA1_DIGEST_SIZE];
        sha1_init(&context);
        sha1_update(&context, data.size(), unsignedBytes(data));
        sha1_digest(&context, sizeof digest, digest);
        benchmark::DoNotOptimize(digest);
    });
}

using KeyedDigest = ByteString (*)(const ByteString&, const ByteString&);

// A record with its 13 bytes of sequence number and header, under a MAC secret of the hash's own length.
void addHmac(const std::string& unit, KeyedDigest ours, const EVP_MD* hash, size_t byteCount) {
    const ByteString key = someBytes(static_cast<size_t>(EVP_MD_get_size(hash)));
    const ByteString data = someBytes(byteCount);
    const std::string caseName = std::to_string(byteCount);
    AddContender(unit, caseName, kOurs, [=] { benchmark::DoNotOptimize(ours(key, data)); });
    const std::shared_ptr<HMAC_CTX> context(HMAC_CTX_new(), HMAC_CTX_free);
    AddContender(unit, caseName, kLibcrypto, [=] {
        unsigned char digest[EVP_MAX_MD_SIZE];
        HMAC_Init_ex(context.get(), key.data(), static_cast<int>(key.size()), hash, nullptr);
        HMAC_Update(context.get(), unsignedBytes(data), data.size());
        HMAC_Final(context.get(), digest, nullptr);
        benchmark::DoNotOptimize(digest);
    });
}

void addHmacMd5(size_t byteCount) {
    addHmac("hmac-md5", hmacMd5, EVP_md5(), byteCount);
    const ByteString key = someBytes(MD5_DIGEST_SIZE);
    const ByteString data = someBytes(byteCount);
    AddContender("hmac-md5", std::to_string(byteCount), kNettle, [=] {
        hmac_md5_ctx context;
        unsigned char digest[MD5_DIGEST_SIZE];
        hmac_md5_set_key(&context, key.size(), unsignedBytes(key));
        hmac_md5_update(&context, data.size(), unsignedBytes(data));
        hmac_md5_digest(&context, sizeof digest, digest);
        benchmark::DoNotOptimize(digest);
    });
}

void addHmacSha1(size_t byteCount) {
    addHmac("hmac-sha1", hmacSha1, EVP_sha1(), byteCount);
    const ByteString key = someBytes(SHA1_DIGEST_SIZE);
    const ByteString data = someBytes(byteCount);
    AddContender("hmac-sha1", std::to_string(byteCount), kNettle, [=] {
        hmac_sha1_ctx context;
        unsigned char digest[SHA1_DIGEST_SIZE];
        hmac_sha1_set_key(&context, key.size(), unsignedBytes(key));
        hmac_sha1_update(&context, data.size(), unsignedBytes(data));
        hmac_sha1_digest(&context, sizeof digest, digest);
        benchmark::DoNotOptimize(digest);
    });
}

// The key block of the suite AES-128 with SHA-1.
void addPrf() {
    const ByteString secret = someBytes(48);
    const ByteString label = "key expansion";
    const ByteString seed = someBytes(64);
    constexpr int32_t kBytes = 104;
    AddContender("prf", "104", kOurs, [=] { benchmark::DoNotOptimize(tlsPrf(secret, label, seed, kBytes)); });

    EVP_KDF* const kdf = EVP_KDF_fetch(nullptr, "TLS1-PRF", nullptr);
    const std::shared_ptr<EVP_KDF_CTX> context(EVP_KDF_CTX_new(kdf), EVP_KDF_CTX_free);
    EVP_KDF_free(kdf);
    AddContender("prf", "104", kLibcrypto, [=, labelSeed = label + seed]() mutable {
        char hash[] = "MD5-SHA1";
        const OSSL_PARAM parameters[] = {
            OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, hash, 0),
            OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SECRET, const_cast<char*>(secret.data()), secret.size()),
            OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SEED, labelSeed.data(), labelSeed.size()),
            OSSL_PARAM_construct_end(),
        };
        unsigned char output[kBytes];
        EVP_KDF_CTX_reset(context.get());
        EVP_KDF_derive(context.get(), output, sizeof output, parameters);
        benchmark::DoNotOptimize(output);
    });
}

// One stream from call to call, as the records of a connection make it.
void addAes(int keyBits, bool encrypt, size_t byteCount) {
    const std::string unit = "aes" + std::to_string(keyBits) + (encrypt ? "-cbc-enc" : "-cbc-dec");
    const std::string caseName = std::to_string(byteCount);
    const ByteString key = someBytes(static_cast<size_t>(keyBits) / 8);
    const ByteString iv = someBytes(16);
    const ByteString data = someBytes(byteCount);

    AesCipher cipher;
    cipher.setKeySize(keyBits, kAesCbc);
    if (encrypt) {
        cipher.initEncrypt(key, iv);
        AddContender(unit, caseName, kOurs, [=]() mutable { benchmark::DoNotOptimize(cipher.encrypt(data)); });
    } else {
        cipher.initDecrypt(key, iv);
        AddContender(unit, caseName, kOurs, [=]() mutable { benchmark::DoNotOptimize(cipher.decrypt(data)); });
    }

    const std::shared_ptr<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    EVP_CipherInit_ex(context.get(), keyBits == 128 ? EVP_aes_128_cbc() : EVP_aes_256_cbc(), nullptr,
                      unsignedBytes(key), unsignedBytes(iv), encrypt ? 1 : 0);
    EVP_CIPHER_CTX_set_padding(context.get(), 0);
    AddContender(unit, caseName, kLibcrypto, [=, output = ByteString(byteCount, '\0')]() mutable {
        int written = 0;
        EVP_CipherUpdate(context.get(), reinterpret_cast<unsigned char*>(output.data()), &written, unsignedBytes(data),
                         static_cast<int>(data.size()));
        benchmark::DoNotOptimize(output.data());
    });
}

void addRc4(size_t byteCount) {
    const ByteString key = someBytes(16);
    const ByteString data = someBytes(byteCount);
    const std::string caseName = std::to_string(byteCount);
    Rc4State state;
    rc4SetKey(state, key);
    AddContender("rc4", caseName, kOurs, [=]() mutable { benchmark::DoNotOptimize(rc4Process(state, data)); });
    RC4_KEY peerState;
    RC4_set_key(&peerState, static_cast<int>(key.size()), unsignedBytes(key));
    AddContender("rc4", caseName, kLibcrypto, [=, output = ByteString(byteCount, '\0')]() mutable {
        RC4(&peerState, data.size(), unsignedBytes(data), reinterpret_cast<unsigned char*>(output.data()));
        benchmark::DoNotOptimize(output.data());
    });
    arcfour_ctx context;
    arcfour_set_key(&context, key.size(), unsignedBytes(key));
    AddContender("rc4", caseName, kNettle, [=, output = ByteString(byteCount, '\0')]() mutable {
        arcfour_crypt(&context, data.size(), reinterpret_cast<unsigned char*>(output.data()), unsignedBytes(data));
        benchmark::DoNotOptimize(output.data());
    });
}

void addAll() {
    for (const size_t byteCount : {64U, 1024U, 16384U, 1048576U}) addMd5(byteCount);
    for (const size_t byteCount : {64U, 1024U, 16384U, 1048576U}) addSha1(byteCount);
    for (const size_t byteCount : {413U, 16397U}) {
        addHmacMd5(byteCount);
        addHmacSha1(byteCount);
    }
    addPrf();
    for (const int keyBits : {128, 256}) {
        for (const size_t byteCount : {448U, 16384U}) {
            addAes(keyBits, true, byteCount);
            addAes(keyBits, false, byteCount);
        }
    }
    for (const size_t byteCount : {448U, 16384U}) addRc4(byteCount);
}

}  // namespace
}  // namespace velmora

int main(int argc, char** argv) {
    velmora::addAll();
    return velmora::RunRatioTable(argc, argv);
}
