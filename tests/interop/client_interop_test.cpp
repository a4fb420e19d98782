// Our client with servers that others have written.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "crypto/trust_store.h"
#include "tests/interop/interop_case.h"
#include "tests/interop/link_checks.h"
#include "tests/interop/record_editing.h"
#include "tests/interop/tls_dialogue.h"
#include "tests/support/tls_records.h"

namespace velmora::interop {
namespace {

// RFC 2246, 7.2
constexpr int kCertificateUnknown = 46;

class ClientInterop : public testing::TestWithParam<InteropCase> {
protected:
    ClientInterop() { setOwnCertificate({}, {}); }

    TlsPeerOptions ServerOptions() const {
        return {.role = PeerRole::kServer, .suite = GetParam().suite, .identity = LoadTlsIdentity("rsa2048")};
    }

    TlsDialogue With(const TlsPeerOptions& options) const { return {GetParam().implementation, options}; }
};

INSTANTIATE_TEST_SUITE_P(With, ClientInterop, testing::ValuesIn(kInteropCases), CaseName);

TEST_P(ClientInterop, CompletesTheHandshakeWithKeysOfEverySize) {
    for (const char* identity : {"rsa1024", "rsa2048", "rsa4096"}) {
        SCOPED_TRACE(identity);
        TlsPeerOptions options = ServerOptions();
        options.identity = LoadTlsIdentity(identity);
        TlsDialogue dialogue = With(options);
        dialogue.Handshake();
        ASSERT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
        EXPECT_EQ(dialogue.peer->State().version, 0x0301);
        EXPECT_EQ(dialogue.peer->State().suite, GetParam().suite);
        EXPECT_EQ(dialogue.ours.Suite().number, GetParam().suiteNumber);
        EXPECT_EQ(dialogue.ours.KeyExchangeCertificate().certificates, std::vector{options.identity.certificate});
        EXPECT_TRUE(dialogue.Carries("data"));
    }
}

TEST_P(ClientInterop, CarriesDataOfEveryLengthBothWays) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.Handshake();
    ExpectDataOfEveryLengthCarried(dialogue);
}

TEST_P(ClientInterop, SendsWhatItWasGivenBeforeTheHandshakeWasComplete) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.ours.StartClientHandshake();
    dialogue.Send("early data");
    EXPECT_EQ(dialogue.peer->Read(), "early data");
}

TEST_P(ClientInterop, NamesTheServerThatItExpects) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.ours.SetExpectedDomain("pbx.velmora.example");
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp());
    EXPECT_EQ(dialogue.peer->State().serverName, "pbx.velmora.example");
}

TEST_P(ClientInterop, NamesNoServerWhenItExpectsNone) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp());
    EXPECT_EQ(dialogue.peer->State().serverName, "");
}

TEST_P(ClientInterop, VerifiesTheNameInTheServersCertificateWhenAsked) {
    for (const bool nameIsRight : {true, false}) {
        TlsDialogue dialogue = With(ServerOptions());
        dialogue.ours.verifyCertificates = true;
        dialogue.ours.SetExpectedDomain(nameIsRight ? "pbx.velmora.example" : "other.velmora.example");
        trustStore.clear();
        trustCertificate(LoadTlsIdentity("rsa2048").certificate);
        dialogue.Handshake();
        trustStore.clear();
        EXPECT_EQ(dialogue.IsUp(), nameIsRight);
        EXPECT_EQ(dialogue.peer->State().alertReceived, nameIsRight ? -1 : kCertificateUnknown);
    }
}

TEST_P(ClientInterop, ReadsEverythingByteByByte) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.feedBytes = 1;
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp());
    EXPECT_TRUE(dialogue.Carries(SampleData(20000)));
}

TEST_P(ClientInterop, ReadsAFlightInOneRecord) {
    TlsDialogue dialogue = With(ServerOptions());
    bool joined = false;
    dialogue.onWayToUs = [&](const ByteString& bytes) {
        const ByteString edited = WithHandshakeInOneRecord(bytes);
        joined |= edited != bytes;
        return edited;
    };
    dialogue.Handshake();
    EXPECT_TRUE(joined);
    EXPECT_TRUE(dialogue.IsUp());
    EXPECT_TRUE(dialogue.Carries("data"));
}

TEST_P(ClientInterop, ReadsMessagesThatAreCutIntoRecords) {
    for (const size_t pieceBytes : {1U, 3U, 4U, 5U, 100U}) {
        SCOPED_TRACE(pieceBytes);
        TlsDialogue dialogue = With(ServerOptions());
        dialogue.onWayToUs = [=](const ByteString& bytes) { return WithHandshakeInPieces(bytes, pieceBytes); };
        dialogue.Handshake();
        EXPECT_TRUE(dialogue.IsUp());
    }
}

TEST_P(ClientInterop, ReadsShortRecords) {
    TlsPeerOptions options = ServerOptions();
    options.fragmentBytes = 512;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp());
    size_t longest = 0;
    dialogue.onWayToUs = [&](const ByteString& bytes) {
        for (const WireRecord& record : CutRecords(bytes)) longest = std::max(longest, record.fragment.size());
        return bytes;
    };
    dialogue.peer->Write(SampleData(20000));
    dialogue.Exchange();
    EXPECT_EQ(dialogue.received, SampleData(20000));
    EXPECT_GT(longest, 0U);
    EXPECT_LT(longest, 600U);
}

TEST_P(ClientInterop, MeetsAServerOfLaterVersionsInTls10) {
    TlsPeerOptions options = ServerOptions();
    options.laterVersions = true;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_EQ(dialogue.peer->State().version, 0x0301);
}

TEST_P(ClientInterop, ProvesItsOwnCertificateWhenAsked) {
    UseTlsIdentity("client");
    TlsPeerOptions options = ServerOptions();
    options.trusted = ClientAuthorityCertificate();
    options.demandsCertificate = true;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_EQ(dialogue.peer->State().peerCertificate, LoadTlsIdentity("client").certificate);
    EXPECT_TRUE(dialogue.Carries("data"));
}

TEST_P(ClientInterop, IsRefusedWhenItHasNotTheKeyOfItsCertificate) {
    setOwnCertificate({LoadTlsIdentity("client").certificate}, LoadTlsIdentity("rsa1024").privateKey);
    TlsPeerOptions options = ServerOptions();
    options.trusted = ClientAuthorityCertificate();
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.peer->State().failed);
    EXPECT_FALSE(dialogue.peer->State().handshakeComplete);
    EXPECT_TRUE(dialogue.ours.PeerAlertReceived());
    EXPECT_FALSE(dialogue.ours.HandshakeComplete());
}

TEST_P(ClientInterop, ShowsNoCertificateToAServerThatTrustsOtherAuthorities) {
    UseTlsIdentity("client");
    TlsPeerOptions options = ServerOptions();
    options.trusted = LoadTlsIdentity("rsa4096").certificate;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_EQ(dialogue.peer->State().peerCertificate, "");
    EXPECT_TRUE(dialogue.Carries("data"));
}

TEST_P(ClientInterop, ShowsNoCertificateWhenItHasNone) {
    TlsPeerOptions options = ServerOptions();
    options.trusted = ClientAuthorityCertificate();
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_EQ(dialogue.peer->State().peerCertificate, "");
}

TEST_P(ClientInterop, NoticesTheAlertOfAServerThatDemandsACertificate) {
    TlsPeerOptions options = ServerOptions();
    options.trusted = ClientAuthorityCertificate();
    options.demandsCertificate = true;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.peer->State().failed);
    EXPECT_TRUE(dialogue.ours.PeerAlertReceived());
    EXPECT_FALSE(dialogue.ours.HandshakeComplete());
}

TEST_P(ClientInterop, AnswersTheServersCloseNotify) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.Handshake();
    ExpectCloseNotifyAnswered(dialogue);
}

TEST_P(ClientInterop, EndsTheConnectionOverATamperedRecord) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.Handshake();
    ExpectTamperedRecordRefused(dialogue);
}

TEST_P(ClientInterop, NoticesTheServersAlertForATamperedRecord) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.Handshake();
    ExpectAlertForTamperedRecordNoticed(dialogue);
}

TEST_P(ClientInterop, ResumesTheSessionOnASecondConnection) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.Handshake();
    EXPECT_FALSE(dialogue.peer->State().resumed);
    // Once more over the resumed one.
    for (int connection = 2; connection <= 3; ++connection) {
        SCOPED_TRACE(connection);
        dialogue.Reconnect();
        EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
        EXPECT_TRUE(dialogue.peer->State().resumed);
        EXPECT_TRUE(dialogue.Carries(SampleData(20000)));
    }
}

TEST_P(ClientInterop, DoesAFullHandshakeWithAServerThatForgets) {
    TlsPeerOptions options = ServerOptions();
    options.resumption = false;
    TlsDialogue dialogue = With(options);
    dialogue.Handshake();
    dialogue.Reconnect();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_FALSE(dialogue.peer->State().resumed);
    EXPECT_TRUE(dialogue.Carries("data"));
}

TEST_P(ClientInterop, DoesAFullHandshakeWithAServerThatNeverKnewTheSession) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.Handshake();
    dialogue.peer = MakeTlsPeer(GetParam().implementation, ServerOptions());
    dialogue.Reconnect();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_FALSE(dialogue.peer->State().resumed);
}

TEST_P(ClientInterop, LeavesARequestToRenegotiateOutOfTheHandshakesProof) {
    TlsDialogue dialogue = With(ServerOptions());
    const ByteString request = RecordBytes({RecordType::kHandshake, kTls10, ByteString(4, '\0')});
    dialogue.onWayToUs = [&](const ByteString& bytes) {
        // A server's first flight, and nothing behind it.
        return CutRecords(bytes).size() > 2 ? request + bytes : bytes;
    };
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
}

TEST_P(ClientInterop, IgnoresARequestToRenegotiate) {
    TlsDialogue dialogue = With(ServerOptions());
    dialogue.Handshake();
    ByteString request;
    dialogue.onWayToUs = [&](const ByteString& bytes) {
        request += bytes;
        return bytes;
    };
    dialogue.peer->AskForRenegotiation();
    dialogue.Exchange();
    EXPECT_FALSE(request.empty());
    EXPECT_TRUE(dialogue.IsUp());
    EXPECT_TRUE(dialogue.Carries("data"));
}

}  // namespace
}  // namespace velmora::interop
