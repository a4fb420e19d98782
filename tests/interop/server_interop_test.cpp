// Our server with clients that others have written.

#include <gtest/gtest.h>

#include "crypto/trust_store.h"
#include "tests/interop/interop_case.h"
#include "tests/interop/link_checks.h"
#include "tests/interop/record_editing.h"
#include "tests/interop/tls_dialogue.h"
#include "tests/support/hand_clock.h"
#include "tls/session_cache.h"

namespace velmora::interop {
namespace {

// RFC 2246, 7.2
constexpr int kHandshakeFailure = 40;

// Longer than any session waits until it can be resumed.
constexpr uint64_t kSessionWaitMs = 1200 * 1000;

class ServerInterop : public testing::TestWithParam<InteropCase> {
protected:
    ServerInterop() {
        UseTlsIdentity("rsa2048");
        sessionCache.Clear();
    }

    TlsPeerOptions ClientOptions() const { return {.role = PeerRole::kClient, .suite = GetParam().suite}; }

    TlsDialogue With(const TlsPeerOptions& options) const { return {GetParam().implementation, options}; }
};

INSTANTIATE_TEST_SUITE_P(With, ServerInterop, testing::ValuesIn(kInteropCases), CaseName);

TEST_P(ServerInterop, CompletesTheHandshakeWithKeysOfEverySize) {
    for (const char* identity : {"rsa1024", "rsa2048", "rsa4096"}) {
        SCOPED_TRACE(identity);
        UseTlsIdentity(identity);
        TlsDialogue dialogue = With(ClientOptions());
        dialogue.Handshake();
        EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
        EXPECT_EQ(dialogue.peer->State().version, 0x0301);
        EXPECT_EQ(dialogue.peer->State().suite, GetParam().suite);
        EXPECT_EQ(dialogue.ours.Suite().number, GetParam().suiteNumber);
        EXPECT_EQ(dialogue.peer->State().peerCertificate, LoadTlsIdentity(identity).certificate);
        EXPECT_TRUE(dialogue.Carries("data"));
    }
}

TEST_P(ServerInterop, CarriesDataOfEveryLengthBothWays) {
    TlsDialogue dialogue = With(ClientOptions());
    dialogue.Handshake();
    ExpectDataOfEveryLengthCarried(dialogue);
}

TEST_P(ServerInterop, IsVerifiedByAClientThatTrustsIt) {
    TlsPeerOptions options = ClientOptions();
    options.trusted = LoadTlsIdentity("rsa2048").certificate;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
}

TEST_P(ServerInterop, NoticesTheAlertOfAClientThatDoesNotTrustIt) {
    TlsPeerOptions options = ClientOptions();
    options.trusted = LoadTlsIdentity("rsa4096").certificate;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.peer->State().failed);
    EXPECT_TRUE(dialogue.ours.PeerAlertReceived());
    EXPECT_FALSE(dialogue.ours.HandshakeComplete());
}

TEST_P(ServerInterop, IsRefusedWhenItHasNotTheKeyOfItsCertificate) {
    setOwnCertificate({LoadTlsIdentity("rsa2048").certificate}, LoadTlsIdentity("rsa1024").privateKey);
    TlsDialogue dialogue = With(ClientOptions());
    dialogue.Handshake();
    EXPECT_FALSE(dialogue.peer->State().handshakeComplete);
    EXPECT_FALSE(dialogue.IsUp());
}

TEST_P(ServerInterop, LetsAClientInThatNamesAServer) {
    TlsPeerOptions options = ClientOptions();
    options.serverName = "some.other.example";
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
}

TEST_P(ServerInterop, MeetsAClientOfLaterVersionsInTls10) {
    TlsPeerOptions options = ClientOptions();
    options.laterVersions = true;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_EQ(dialogue.peer->State().version, 0x0301);
    EXPECT_TRUE(dialogue.Carries("data"));
}

TEST_P(ServerInterop, ReadsEverythingByteByByte) {
    TlsDialogue dialogue = With(ClientOptions());
    dialogue.feedBytes = 1;
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp());
    EXPECT_TRUE(dialogue.Carries(SampleData(20000)));
}

TEST_P(ServerInterop, ReadsMessagesThatAreCutIntoRecords) {
    for (const size_t pieceBytes : {1U, 3U, 4U, 5U, 100U}) {
        SCOPED_TRACE(pieceBytes);
        TlsDialogue dialogue = With(ClientOptions());
        dialogue.onWayToUs = [=](const ByteString& bytes) { return WithHandshakeInPieces(bytes, pieceBytes); };
        dialogue.Handshake();
        EXPECT_TRUE(dialogue.IsUp());
    }
}

TEST_P(ServerInterop, ReadsShortRecords) {
    TlsPeerOptions options = ClientOptions();
    options.fragmentBytes = 512;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp());
    EXPECT_TRUE(dialogue.Carries(SampleData(500)));
    dialogue.peer->Write(SampleData(20000));
    dialogue.Exchange();
    EXPECT_EQ(dialogue.received, SampleData(500) + SampleData(20000));
}

TEST_P(ServerInterop, AnswersTheClientsCloseNotify) {
    TlsDialogue dialogue = With(ClientOptions());
    dialogue.Handshake();
    ExpectCloseNotifyAnswered(dialogue);
}

TEST_P(ServerInterop, RefusesAClientWithoutACommonSuite) {
    TlsPeerOptions options = ClientOptions();
    options.suite = GetParam().implementation == TlsLibrary::kOpenSsl ? "ECDHE-RSA-AES128-SHA" : "DES-CBC3-SHA";
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.ours.Failed());
    EXPECT_EQ(dialogue.peer->State().alertReceived, kHandshakeFailure);
}

TEST_P(ServerInterop, EndsTheConnectionOverATamperedRecord) {
    TlsDialogue dialogue = With(ClientOptions());
    dialogue.Handshake();
    ExpectTamperedRecordRefused(dialogue);
}

TEST_P(ServerInterop, NoticesTheClientsAlertForATamperedRecord) {
    TlsDialogue dialogue = With(ClientOptions());
    dialogue.Handshake();
    ExpectAlertForTamperedRecordNoticed(dialogue);
}

TEST_P(ServerInterop, ResumesASessionOnceItsTimeHasPassed) {
    TlsDialogue dialogue = With(ClientOptions());
    dialogue.ours.resumeSessions = true;
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    // Once more over the resumed one.
    for (int connection = 2; connection <= 3; ++connection) {
        SCOPED_TRACE(connection);
        handClockMs += kSessionWaitMs;
        dialogue.Reconnect();
        EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
        EXPECT_TRUE(dialogue.peer->State().resumed);
        EXPECT_TRUE(dialogue.Carries(SampleData(20000)));
    }
}

TEST_P(ServerInterop, DoesAFullHandshakeBeforeTheSessionsTimeHasPassed) {
    TlsDialogue dialogue = With(ClientOptions());
    dialogue.ours.resumeSessions = true;
    dialogue.Handshake();
    dialogue.Reconnect();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_FALSE(dialogue.peer->State().resumed);
    EXPECT_TRUE(dialogue.Carries("data"));
}

TEST_P(ServerInterop, DoesAFullHandshakeWhenItResumesNoSessions) {
    TlsDialogue dialogue = With(ClientOptions());
    dialogue.Handshake();
    handClockMs += kSessionWaitMs;
    dialogue.Reconnect();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_FALSE(dialogue.peer->State().resumed);
}

}  // namespace
}  // namespace velmora::interop
