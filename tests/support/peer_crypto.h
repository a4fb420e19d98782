#pragma once

#include <openssl/types.h>

#include <cstddef>
#include <memory>

#include "config/byte_string.h"

namespace velmora {

// Digests, keys and ciphers as libcrypto computes them: a judge that shares no line with crypto/.

// The digest of data. hash is "MD5" or "SHA1", as in HMAC.
ByteString PeerDigest(const char* hash, const ByteString& data);
ByteString PeerHmac(const char* hash, const ByteString& key, const ByteString& data);

// The first count bytes of the PRF of TLS 1.0, one at the least; nor may the secret be empty.
ByteString PeerTlsPrf(ByteString secret, const ByteString& label, const ByteString& seed, size_t count);

// RSA with the padding of PKCS #1, type 2. The key is an RSAPrivateKey in DER. A block that cannot be decrypted gives
// an empty string.
ByteString PeerRsaEncrypt(const ByteString& privateKey, const ByteString& secret);
ByteString PeerRsaDecrypt(const ByteString& privateKey, const ByteString& block);

// A stream of RC4 when iv is empty; else of AES in CBC mode, with 128 or 256 bits as the key has.
class PeerCipher {
public:
    enum class Way { kEncrypt, kDecrypt };
    PeerCipher(Way way, const ByteString& key, const ByteString& iv);

    // The next bytes of the stream; for AES, whole blocks.
    ByteString Process(const ByteString& data);

private:
    std::shared_ptr<EVP_CIPHER_CTX> aes;
    std::shared_ptr<void> rc4;
};

}  // namespace velmora
