// A client and a server joined by a wire that changes what passes: a full handshake, or a resumed one, and data behind
// it. Whatever the wire does, no end hands out data under the keys that the other has not sent.
#include <string_view>

#include "config/settings.h"
#include "crypto/trust_store.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/tls_stages.h"
#include "tests/support/fixed_random.h"
#include "tests/support/hand_clock.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"
#include "tls/session_cache.h"

namespace velmora {
namespace {

// Changes to the bytes of both directions, taken from the input: where, counted from the last change; what; and a
// value.
class Wire {
public:
    explicit Wire(FuzzInput& changes) : input(changes) { NextChange(); }

    ByteString Pass(std::string_view bytes) {
        ByteString passed;
        while (armed && distance < bytes.size()) {
            passed += bytes.substr(0, distance);
            passed += Changed(bytes[distance]);
            changed = true;
            bytes.remove_prefix(distance + 1);
            NextChange();
        }
        if (armed) distance -= bytes.size();
        return passed.append(bytes);
    }

    bool HasChanged() const { return changed; }

private:
    void NextChange() {
        armed = !input.AtEnd();
        distance = input.U16() % 2048;
        kind = input.U8();
    }

    // Flips bits, inserts bytes, repeats the byte, drops it, or sends something instead.
    ByteString Changed(char byte) {
        switch (kind % 5) {
            case 0:
                return {static_cast<char>(static_cast<unsigned char>(byte) ^ (input.U8() | 1U))};
            case 1:
                return byte + input.Piece();
            case 2:
                return ByteString(1U + input.U8(), byte);
            case 3:
                return {};
            default:
                return input.Piece();
        }
    }

    FuzzInput& input;
    bool armed = false;
    size_t distance = 0;
    uint8_t kind = 0;
    bool changed = false;
};

// Nothing but repetitions of the text, the last one perhaps cut off.
bool Repeats(const ByteString& bytes, const ByteString& text) {
    for (size_t position = 0; position < bytes.size(); ++position) {
        if (bytes[position] != text[position % text.size()]) return false;
    }
    return true;
}

// Two ends that have a session in common, which the next handshake resumes.
TlsPair MakeResumingPair() {
    TlsPair pair;
    pair.server.resumeSessions = true;
    pair.Handshake();
    Expect(pair.client.HandshakeComplete() && !pair.client.Failed(), "a usual handshake goes through");
    pair.client.Reset();
    pair.client.verifyCertificates = false;
    pair.server = TlsConnection();
    pair.server.resumeSessions = true;
    return pair;
}

struct Scene {
    TlsPair full;
    TlsPair resuming;
    SessionCache sessions;
};

// Nothing is logged: the other targets render the same records.
Scene MakeScene() {
    settings.loglevel = 0;
    ByteString sequence;
    for (int index = 0; index < 251; ++index) sequence += static_cast<char>(index * 7 + 1);
    fixedRandomSequence = sequence;
    UseTlsIdentity("rsa512");
    Scene scene;
    scene.resuming = MakeResumingPair();
    scene.sessions = sessionCache;
    return scene;
}

bool IsGood(const TlsConnection& end) {
    return end.HandshakeComplete() && !end.Failed();
}

// Before the keys an end hands out what comes in the clear, so only what a good end hands out counts.
void Exchange(TlsPair& pair, Wire& wire) {
    pair.client.StartClientHandshake();
    for (int round = 0; round < 8; ++round) {
        const bool clientWasGood = IsGood(pair.client);
        const bool serverWasGood = IsGood(pair.server);
        const ByteString toServer = wire.Pass(pair.client.Send(clientWasGood ? "request" : ""));
        const ByteString atServer = pair.server.Feed(toServer);
        const ByteString toClient = wire.Pass(pair.server.Send(IsGood(pair.server) ? "answer" : ""));
        const ByteString atClient = pair.client.Feed(toClient);
        if (serverWasGood) Expect(Repeats(atServer, "request"), "a server hands out what its client has sent");
        if (clientWasGood) Expect(Repeats(atClient, "answer"), "a client hands out what its server has sent");
        if (toServer.empty() && toClient.empty()) return;
    }
}

}  // namespace
}  // namespace velmora

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    static const Scene scene = MakeScene();
    handClockMs = 3600000 + 2000000;
    fixedRandomTaken = 100;
    sessionCache = scene.sessions;

    FuzzInput input(data, bytes);
    TlsPair pair = input.U8() % 8 == 0 ? scene.full : scene.resuming;
    Wire wire(input);
    Exchange(pair, wire);
    if (!wire.HasChanged()) Expect(IsGood(pair.client) && IsGood(pair.server), "an honest wire harms nobody");
    return 0;
}
