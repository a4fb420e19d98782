#include <gtest/gtest.h>

#include "tests/support/peer_crypto.h"
#include "tests/support/seeded_bytes.h"
#include "tls/key_derivation.h"
#include "tls/protocol.h"

namespace velmora {
namespace {

TEST(KeyDerivationPeer, AgreesOnHundredsOfTlsConnections) {
    SeededBytes random(1);
    for (int run = 0; run < 500; ++run) {
        const ByteString preMaster = random.take(48);
        const ByteString client = random.take(32);
        const ByteString server = random.take(32);
        const ByteString master = PeerTlsPrf(preMaster, "master secret", client + server, 48);
        ASSERT_EQ(MasterSecret(kTls10, preMaster, client, server), master) << run;
        const size_t length = 1 + random.upTo(135);
        ASSERT_EQ(KeyBlock(kTls10, master, client, server, length),
                  PeerTlsPrf(master, "key expansion", server + client, length))
            << run;

        const ByteString messages = random.take(random.upTo(500));
        Transcript transcript;
        transcript.Append(messages);
        const ByteString digests = PeerDigest("MD5", messages) + PeerDigest("SHA1", messages);
        ASSERT_EQ(VerifyData(kTls10, master, Endpoint::kClient, transcript),
                  PeerTlsPrf(master, "client finished", digests, 12))
            << run;
        ASSERT_EQ(VerifyData(kTls10, master, Endpoint::kServer, transcript),
                  PeerTlsPrf(master, "server finished", digests, 12))
            << run;
    }
}

}  // namespace
}  // namespace velmora
