#include "fuzzing/support/tls_stages.h"

#include "crypto/trust_store.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/quiet_log.h"
#include "tests/support/fixed_random.h"
#include "tests/support/hand_clock.h"
#include "tests/support/tls_identity.h"
#include "tls/wire.h"

namespace velmora {
namespace {

constexpr CipherSuite kUnknownSuite = {.number = 0x1234};
constexpr int kMostPieces = 32;  // or an input would take hundreds of times as long as another

void ExpectComplete(const TlsConnection& end) {
    Expect(end.HandshakeComplete() && !end.Failed(), "a usual handshake goes through");
}

void AddClientStages(std::vector<TlsStage>& stages, const CipherSuite& suite) {
    TlsStage stage = {TlsConnection(), KeyedPeer(Endpoint::kServer, kTls10, suite), {}};
    TlsConnection& client = stage.end;
    KeyedPeer& server = stage.peer;
    client.verifyCertificates = false;
    client.StartClientHandshake();
    server.Read(client.Send({}));
    stages.push_back(stage);

    client.Feed(server.ServerHello());
    stages.push_back(stage);
    const ByteString list = WireWriter().Bytes24(LoadTlsIdentity("rsa512").certificate).Written();
    client.Feed(server.Message(HandshakeType::kCertificate, WireWriter().Bytes24(list).Written()));
    stages.push_back(stage);
    client.Feed(server.Message(HandshakeType::kServerHelloDone, {}));
    server.Read(client.Send({}));
    stages.push_back(stage);
    client.Feed(server.ChangeCipherSpec());
    stages.push_back(stage);
    client.Feed(server.Finished());
    ExpectComplete(client);
    stages.push_back(stage);
}

void AddServerStages(std::vector<TlsStage>& stages, uint16_t version, const CipherSuite& suite, bool resumes) {
    sessionCache.Clear();
    TlsStage stage = {TlsConnection(), KeyedPeer(Endpoint::kClient, version, suite), {}};
    TlsConnection& server = stage.end;
    KeyedPeer& client = stage.peer;
    server.resumeSessions = resumes;
    stages.push_back(stage);

    server.Feed(client.ClientHello());
    client.Read(server.Send({}));
    stages.push_back(stage);
    const CertificateChain& own = ownCertificate();
    server.Feed(client.ClientKeyExchange(own.exponent, own.modulus));
    stage.sessions = sessionCache;
    stages.push_back(stage);
    server.Feed(client.ChangeCipherSpec());
    stages.push_back(stage);
    server.Feed(client.Finished());
    ExpectComplete(server);
    stages.push_back(stage);
}

void SetBack() {
    RenderLogRecords();
    handClockMs = 3600000;
    fixedRandomSequence = "\x5A";
    fixedRandomTaken = 0;
    sessionCache.Clear();
}

void Prepare() {
    SetBack();
    UseTlsIdentity("rsa512");
    trustCertificate(LoadTlsIdentity("rsa512").certificate);
}

}  // namespace

const std::vector<TlsStage>& ClientStages() {
    static const std::vector<TlsStage> stages = [] {
        Prepare();
        std::vector<TlsStage> made;
        for (const CipherSuite& suite : kCipherSuites) AddClientStages(made, suite);
        AddClientStages(made, kUnknownSuite);
        return made;
    }();
    return stages;
}

const std::vector<TlsStage>& ServerStages() {
    static const std::vector<TlsStage> stages = [] {
        Prepare();
        std::vector<TlsStage> made;
        for (const CipherSuite& suite : kCipherSuites) {
            AddServerStages(made, kSsl30, suite, false);
            AddServerStages(made, kTls10, suite, true);
        }
        return made;
    }();
    return stages;
}

TlsStage StageOf(const std::vector<TlsStage>& stages, FuzzInput& input) {
    const TlsStage& stage = stages[input.U8() % stages.size()];
    SetBack();
    sessionCache = stage.sessions;
    return stage;
}

void FeedInPieces(TlsConnection& end, size_t pieceBytes, FuzzInput& input) {
    const bool keyed = end.HandshakeComplete() && end.Suite().IsKnown();
    for (int pieces = 1; !input.AtEnd(); ++pieces) {
        const bool failedBefore = end.Failed();
        const ByteString data = end.Feed(pieces < kMostPieces ? input.Bytes(pieceBytes) : input.Rest());
        Expect(!failedBefore || data.empty(), "an endpoint that has failed hands out nothing");
        Expect(!keyed || data.empty(), "nothing is handed out that has no right MAC");
        end.Send("data");
    }
}

}  // namespace velmora
