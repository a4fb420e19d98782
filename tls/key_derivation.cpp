#include "tls/key_derivation.h"

#include <algorithm>
#include <string_view>

#include "crypto/prf.h"
#include "tls/protocol.h"
#include "tls/ssl3_digest.h"

namespace velmora {
namespace {

constexpr size_t kKeyBlockRoundsAtLeast = 5;  // 80 bytes: enough for the RC4 suites, whatever their length
constexpr int32_t kVerifyDataBytes = 12;

// The salts of SSL 3.0: "A", "BB", "CCC" and so on.
ByteString Salt(size_t round) {
    return ByteString(round + 1, static_cast<char>('A' + round));
}

// One block of 16 bytes of SSL 3.0: MD5(secret, SHA(salt, secret, random1, random2)).
ByteString Ssl3Round(size_t round, const ByteString& secret, const ByteString& random1, const ByteString& random2) {
    const ByteString inner = DigestBehind(Sha1State(), {Salt(round), secret, random1, random2});
    return DigestBehind(Md5State(), {secret, inner});
}

ByteString Ssl3Rounds(size_t rounds, const ByteString& secret, const ByteString& random1, const ByteString& random2) {
    ByteString block;
    for (size_t round = 0; round < rounds; ++round) block += Ssl3Round(round, secret, random1, random2);
    return block;
}

// One half of SSL 3.0's Finished.
template <typename Hash>
ByteString Ssl3Proof(const Hash& transcript, std::string_view sender, const ByteString& masterSecret) {
    return Ssl3Digest<Hash>(masterSecret, DigestBehind(transcript, {sender, masterSecret, PadFor<Hash>(kPad1)}));
}

}  // namespace

ByteString MasterSecret(uint16_t version, const ByteString& preMaster, const ByteString& clientRandom,
                        const ByteString& serverRandom) {
    const ByteString secret = preMaster.substr(preMaster.size() - std::min(preMaster.size(), kPreMasterSecretBytes));
    if (version >= kTls10) return tlsPrf(secret, "master secret", clientRandom + serverRandom, kMasterSecretBytes);
    return Ssl3Rounds(kMasterSecretBytes / kMd5Bytes, secret, clientRandom, serverRandom);
}

ByteString KeyBlock(uint16_t version, const ByteString& masterSecret, const ByteString& clientRandom,
                    const ByteString& serverRandom, size_t length) {
    if (version >= kTls10) {
        return tlsPrf(masterSecret, "key expansion", serverRandom + clientRandom, static_cast<int32_t>(length));
    }
    const size_t rounds = std::max((length + kMd5Bytes - 1) / kMd5Bytes, kKeyBlockRoundsAtLeast);
    return Ssl3Rounds(rounds, masterSecret, serverRandom, clientRandom);
}

ByteString VerifyData(uint16_t version, const ByteString& masterSecret, Endpoint sender, const Transcript& transcript) {
    const bool client = sender == Endpoint::kClient;
    if (version >= kTls10) {
        const ByteString digests = transcript.md5.digest() + transcript.sha1.digest();
        return tlsPrf(masterSecret, client ? "client finished" : "server finished", digests, kVerifyDataBytes);
    }
    const std::string_view label = client ? "CLNT" : "SRVR";
    return Ssl3Proof(transcript.md5, label, masterSecret) + Ssl3Proof(transcript.sha1, label, masterSecret);
}

}  // namespace velmora
