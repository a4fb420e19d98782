#define OPENSSL_SUPPRESS_DEPRECATED  // the states whose length can be set
#include <gtest/gtest.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

#include "crypto/hmac.h"
#include "crypto/md5.h"
#include "crypto/prf.h"
#include "crypto/sha1.h"
#include "tests/support/peer_crypto.h"
#include "tests/support/seeded_bytes.h"

namespace velmora {
namespace {

TEST(HashPeer, AgreesOnMessagesOfEveryLengthUpTo1000) {
    SeededBytes random(1);
    for (size_t count = 0; count <= 1000; ++count) {
        const ByteString data = random.take(count);
        ASSERT_EQ(md5Digest(data), PeerDigest("MD5", data)) << count;
        ASSERT_EQ(sha1Digest(data), PeerDigest("SHA1", data)) << count;
    }
}

TEST(HashPeer, AgreesOnThousandsOfMessagesTakenInPieces) {
    SeededBytes random(2);
    for (int run = 0; run < 3000; ++run) {
        ByteString data;
        Md5State md5;
        Sha1State sha1;
        for (size_t pieces = random.upTo(8); pieces > 0; --pieces) {
            const ByteString piece = random.take(random.upTo(run % 10 == 0 ? 2000 : 130));
            data += piece;
            md5.update(piece);
            sha1.update(piece);
        }
        ASSERT_EQ(md5.digest(), PeerDigest("MD5", data)) << run;
        ASSERT_EQ(sha1.digest(), PeerDigest("SHA1", data)) << run;
    }
}

TEST(HashPeer, AgreesOnTheEndOfMessagesOfMoreThan4GigabitsWithoutWritingThemAll) {
    SeededBytes random(3);
    for (const uint32_t high : {0U, 1U, 7U, 0xFFFFFFFFU}) {
        const ByteString data = random.take(1000);
        unsigned char digest[SHA_DIGEST_LENGTH];

        Md5State md5;
        MD5_CTX md5Peer;
        MD5_Init(&md5Peer);
        md5.bitCount[0] = md5Peer.Nl = 0xFFFFFE00;
        md5.bitCount[1] = md5Peer.Nh = high;
        md5.update(data);
        MD5_Update(&md5Peer, data.data(), data.size());
        MD5_Final(digest, &md5Peer);
        EXPECT_EQ(md5.digest(), ByteString(digest, digest + kMd5Bytes));

        Sha1State sha1;
        SHA_CTX sha1Peer;
        SHA1_Init(&sha1Peer);
        sha1.bitCount[0] = sha1Peer.Nl = 0xFFFFFE00;
        sha1.bitCount[1] = sha1Peer.Nh = high;
        sha1.update(data);
        SHA1_Update(&sha1Peer, data.data(), data.size());
        SHA1_Final(digest, &sha1Peer);
        EXPECT_EQ(sha1.digest(), ByteString(digest, digest + kSha1Bytes));
    }
}

TEST(HmacPeer, AgreesOnThousandsOfKeysAndMessages) {
    SeededBytes random(4);
    for (int run = 0; run < 4000; ++run) {
        const ByteString key = random.take(random.upTo(64));
        const ByteString data = random.take(random.upTo(run % 10 == 0 ? 5000 : 300));
        ASSERT_EQ(hmacMd5(key, data), PeerHmac("MD5", key, data)) << run;
        ASSERT_EQ(hmacSha1(key, data), PeerHmac("SHA1", key, data)) << run;
    }
}

TEST(PrfPeer, AgreesOnThousandsOfSecrets) {
    SeededBytes random(5);
    for (int run = 0; run < 2000; ++run) {
        // libcrypto's wants a secret and a byte of output at the least.
        const ByteString secret = random.take(1 + random.upTo(127));
        const ByteString label = random.take(1 + random.upTo(20));
        const ByteString seed = random.take(random.upTo(100));
        const size_t count = 1 + random.upTo(300);
        ASSERT_EQ(tlsPrf(secret, label, seed, static_cast<int32_t>(count)), PeerTlsPrf(secret, label, seed, count))
            << run;
    }
}

}  // namespace
}  // namespace velmora
