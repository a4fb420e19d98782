#define OPENSSL_SUPPRESS_DEPRECATED  // RC4 without the provider of outdated algorithms
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/rc4.h>

#include <memory>

#include "crypto/aes.h"
#include "crypto/rc4.h"
#include "tests/support/seeded_bytes.h"

namespace velmora {
namespace {

const unsigned char* unsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

unsigned char* unsignedBytes(ByteString& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

const EVP_CIPHER* peerCipher(int keyBits, uint32_t mode) {
    if (mode == kAesCbc) {
        return keyBits == 128 ? EVP_aes_128_cbc() : keyBits == 192 ? EVP_aes_192_cbc() : EVP_aes_256_cbc();
    }
    return keyBits == 128 ? EVP_aes_128_cfb128() : keyBits == 192 ? EVP_aes_192_cfb128() : EVP_aes_256_cfb128();
}

// One stream of libcrypto's.
class PeerStream {
public:
    PeerStream(int keyBits, uint32_t mode, const ByteString& key, const ByteString& iv, bool encrypt)
        : context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free) {
        EVP_CipherInit_ex(context.get(), peerCipher(keyBits, mode), nullptr, unsignedBytes(key), unsignedBytes(iv),
                          encrypt ? 1 : 0);
        EVP_CIPHER_CTX_set_padding(context.get(), 0);
    }

    ByteString process(const ByteString& data) {
        ByteString output(data.size(), '\0');
        int written = 0;
        EVP_CipherUpdate(context.get(), unsignedBytes(output), &written, unsignedBytes(data),
                         static_cast<int>(data.size()));
        EXPECT_EQ(static_cast<size_t>(written), data.size());
        return output;
    }

private:
    std::shared_ptr<EVP_CIPHER_CTX> context;
};

struct Stream {
    int keyBits;
    uint32_t mode;
    ByteString key;
    ByteString iv;
};

Stream anyStream(SeededBytes& random) {
    const int keyBits = 128 + 64 * static_cast<int>(random.upTo(2));
    const uint32_t mode = random.upTo(1) == 0 ? kAesCbc : kAesCfb;
    return {keyBits, mode, random.take(static_cast<size_t>(keyBits) / 8), random.take(16)};
}

// Whole blocks, mostly few, so that every way of taking several at once is gone.
ByteString anyBlocks(SeededBytes& random) {
    return random.take(16 * random.upTo(random.upTo(9) == 0 ? 200 : 40));
}

TEST(AesPeer, EncryptsThousandsOfStreamsAlike) {
    SeededBytes random(1);
    for (int run = 0; run < 2000; ++run) {
        const Stream stream = anyStream(random);
        AesCipher cipher;
        cipher.setKeySize(stream.keyBits, stream.mode);
        cipher.initEncrypt(stream.key, stream.iv);
        PeerStream peer(stream.keyBits, stream.mode, stream.key, stream.iv, true);
        for (size_t calls = random.upTo(4); calls > 0; --calls) {
            const ByteString data = anyBlocks(random);
            ASSERT_EQ(cipher.encrypt(data), peer.process(data)) << run;
        }
    }
}

TEST(AesPeer, DecryptsThousandsOfStreamsAlike) {
    SeededBytes random(2);
    for (int run = 0; run < 2000; ++run) {
        const Stream stream = anyStream(random);
        AesCipher cipher;
        cipher.setKeySize(stream.keyBits, stream.mode);
        cipher.initDecrypt(stream.key, stream.iv);
        PeerStream peer(stream.keyBits, stream.mode, stream.key, stream.iv, false);
        for (size_t calls = random.upTo(4); calls > 0; --calls) {
            const ByteString data = anyBlocks(random);
            ASSERT_EQ(cipher.decrypt(data), peer.process(data)) << run;
        }
    }
}

TEST(AesPeer, DecryptsEveryNumberOfBlocksAlike) {
    SeededBytes random(3);
    for (const int keyBits : {128, 192, 256}) {
        const ByteString key = random.take(static_cast<size_t>(keyBits) / 8);
        const ByteString iv = random.take(16);
        AesCipher cipher;
        cipher.setKeySize(keyBits, kAesCbc);
        cipher.initDecrypt(key, iv);
        PeerStream peer(keyBits, kAesCbc, key, iv, false);
        for (size_t blocks = 1; blocks <= 70; ++blocks) {
            const ByteString data = random.take(16 * blocks);
            ASSERT_EQ(cipher.decrypt(data), peer.process(data)) << blocks;
        }
    }
}

TEST(AesPeer, EndsACfbStreamWithAShortPieceAlike) {
    SeededBytes random(4);
    for (int run = 0; run < 1000; ++run) {
        const Stream stream = anyStream(random);
        const ByteString data = random.take(random.upTo(100));
        AesCipher forward;
        forward.setKeySize(stream.keyBits, kAesCfb);
        forward.initEncrypt(stream.key, stream.iv);
        AesCipher backward;
        backward.setKeySize(stream.keyBits, kAesCfb);
        backward.initDecrypt(stream.key, stream.iv);
        const ByteString ciphertext = forward.encrypt(data);
        ASSERT_EQ(ciphertext, PeerStream(stream.keyBits, kAesCfb, stream.key, stream.iv, true).process(data)) << run;
        ASSERT_EQ(backward.decrypt(ciphertext), data) << run;
    }
}

TEST(Rc4Peer, GivesThousandsOfStreamsAlike) {
    SeededBytes random(5);
    for (int run = 0; run < 3000; ++run) {
        const ByteString key = random.take(1 + random.upTo(run % 2 == 0 ? 15 : 299));
        // Of a longer key, libcrypto takes the first 256 bytes, as everybody does.
        RC4_KEY peer;
        RC4_set_key(&peer, static_cast<int>(key.size()), unsignedBytes(key));
        Rc4State state;
        rc4SetKey(state, key);
        for (size_t calls = random.upTo(4); calls > 0; --calls) {
            const ByteString data = random.take(random.upTo(600));
            ByteString expected(data.size(), '\0');
            RC4(&peer, data.size(), unsignedBytes(data), unsignedBytes(expected));
            ASSERT_EQ(rc4Process(state, data), expected) << run;
        }
    }
}

}  // namespace
}  // namespace velmora
