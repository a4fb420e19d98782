#include "fuzzing/support/peer_script.h"

#include "crypto/trust_store.h"
#include "fuzzing/support/expect.h"
#include "tests/support/hand_clock.h"
#include "tests/support/tls_identity.h"
#include "tls/wire.h"

namespace velmora {
namespace {

constexpr int kMostSteps = 12;  // a handshake, its resumption and data behind each

// Steps that are more than bytes to be read.
constexpr uint8_t kPeerSends = 7;
constexpr uint8_t kEndpointSends = 8;
constexpr uint8_t kStartOver = 9;
constexpr uint8_t kStepKinds = 10;

// The packing number that a step names: all in one record; none of it; the first 1 to 12 bytes; or all in 2 to 13
// records.
MessagePacking Packing(unsigned number) {
    constexpr unsigned kMostFirstBytes = 12;
    if (number == 0) return {};
    if (number <= 1 + kMostFirstBytes) return {.leavingBytes = number - 1};
    return {.records = number - kMostFirstBytes};
}

HandshakeType TypeFrom(FuzzInput& input) {
    return static_cast<HandshakeType>(input.U8());
}

ByteString Certificate(KeyedPeer& peer) {
    static const ByteString list = WireWriter().Bytes24(LoadTlsIdentity("rsa512").certificate).Written();
    return peer.Message(HandshakeType::kCertificate, WireWriter().Bytes24(list).Written());
}

// What one step gives the endpoint to read.
ByteString StepBytes(uint8_t step, TlsStage& stage, FuzzInput& input) {
    KeyedPeer& peer = stage.peer;
    switch (step) {
        case 0: {
            const HandshakeType type = TypeFrom(input);
            return peer.Message(type, input.Piece());
        }
        case 1: {
            const HandshakeType type = TypeFrom(input);
            return peer.Message(type, input.Bytes(input.U16()));
        }
        case 2: {
            const auto type = static_cast<RecordType>(input.U8());
            return peer.Record(type, input.Piece());
        }
        case 3:
            return peer.IsClient() ? peer.ClientHello() : peer.ServerHello();
        case 4:
            if (!peer.IsClient()) return Certificate(peer);
            return peer.ClientKeyExchange(ownCertificate().exponent, ownCertificate().modulus);
        case 5:
            return peer.ChangeCipherSpec();
        case 6:
            return peer.Finished();
        default:
            return peer.Record(RecordType::kApplicationData, input.Piece());
    }
}

void StartOver(TlsConnection& end, unsigned minutes, bool isClient) {
    handClockMs += minutes * uint64_t{60000};
    end.Reset();
    end.verifyCertificates = false;
    end.resumeSessions = true;
    if (isClient) end.StartClientHandshake();
}

}  // namespace

void RunPeerScript(TlsStage stage, FuzzInput& input) {
    TlsConnection& end = stage.end;
    bool agreed = end.HandshakeComplete();  // nothing but data has passed since the handshake
    for (int steps = 0; steps < kMostSteps && !input.AtEnd(); ++steps) {
        const uint8_t choice = input.U8();
        const uint8_t step = choice % kStepKinds;
        stage.peer.SetPacking(Packing(choice / kStepKinds));
        const bool failedBefore = end.Failed();
        if (step == kEndpointSends) {
            stage.peer.Read(end.Send(input.Piece()));
            continue;
        }
        if (step == kStartOver) {
            agreed = false;
            stage.peer.StartOver();
            StartOver(end, input.U8(), !stage.peer.IsClient());
            stage.peer.Read(end.Send({}));
            continue;
        }
        if (step == kPeerSends && agreed) {
            const ByteString sent = input.Piece();
            Expect(end.Feed(stage.peer.Record(RecordType::kApplicationData, sent)) == sent, "data arrives as sent");
            continue;
        }
        agreed = false;
        const ByteString data = end.Feed(StepBytes(step, stage, input));
        Expect(!failedBefore || data.empty(), "an endpoint that has failed hands out nothing");
        stage.peer.Read(end.Send({}));
    }
}

}  // namespace velmora
