#include "benchmarks/crypto_cases.h"
#include "crypto/aes.h"
#include "crypto/hmac.h"
#include "crypto/md5.h"
#include "crypto/prf.h"
#include "crypto/rc4.h"
#include "crypto/sha1.h"

namespace velmora {
namespace {

struct Ours {
    static inline const std::string& kName = kOurs;

    static auto Md5(const ByteString& data) {
        return [&data] { return md5Digest(data); };
    }

    static auto Sha1(const ByteString& data) {
        return [&data] { return sha1Digest(data); };
    }

    static auto HmacMd5(const ByteString& key, const ByteString& data) {
        return [&] { return hmacMd5(key, data); };
    }

    static auto HmacSha1(const ByteString& key, const ByteString& data) {
        return [&] { return hmacSha1(key, data); };
    }

    static auto Prf(const ByteString& secret, const ByteString& seed) {
        return [&] { return tlsPrf(secret, kPrfLabel, seed, kPrfBytes); };
    }

    static auto AesCbcEncrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        AesCipher cipher;
        cipher.setKeySize(static_cast<int32_t>(key.size() * 8), kAesCbc);
        cipher.initEncrypt(key, iv);
        return [&data, cipher]() mutable { return cipher.encrypt(data); };
    }

    static auto AesCbcDecrypt(const ByteString& key, const ByteString& iv, const ByteString& data) {
        AesCipher cipher;
        cipher.setKeySize(static_cast<int32_t>(key.size() * 8), kAesCbc);
        cipher.initDecrypt(key, iv);
        return [&data, cipher]() mutable { return cipher.decrypt(data); };
    }

    static auto Rc4(const ByteString& key, const ByteString& data) {
        Rc4State state;
        rc4SetKey(state, key);
        return [&data, state]() mutable { return rc4Process(state, data); };
    }
};

}  // namespace

void AddOurCrypto() {
    AddCryptoContender<Ours>();
}

}  // namespace velmora
