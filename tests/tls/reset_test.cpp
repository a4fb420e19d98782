#include <gtest/gtest.h>

#include "tests/support/hand_clock.h"
#include "tests/support/logged.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"
#include "tests/support/tls_records.h"
#include "tls/session_cache.h"

namespace velmora {
namespace {

class TlsReset : public testing::Test {
protected:
    TlsReset() { UseTlsIdentity("rsa1024"); }

    ~TlsReset() override {
        sessionCache.Clear();
        handClockMs = 3600000;
    }

    TlsReset(const TlsReset&) = delete;
    TlsReset& operator=(const TlsReset&) = delete;

    // Shakes hands with a server that nobody has spoken to; tells whether data then goes both ways.
    bool ConnectsAgain() {
        pair.client.verifyCertificates = false;
        pair.server = TlsConnection();
        pair.server.resumeSessions = true;
        pair.clientReceived.clear();
        pair.serverReceived.clear();
        pair.Handshake();
        return pair.serverReceived.empty() && pair.client.HandshakeComplete() && pair.server.HandshakeComplete() &&
               !pair.client.Failed() && !pair.server.Failed() &&
               pair.server.Feed(pair.client.Send("to the server")) == "to the server" &&
               pair.client.Feed(pair.server.Send("to the client")) == "to the client";
    }

    // A server that has resumed a session has not looked for a certificate.
    bool HasResumed() const { return pair.server.KeyExchangeCertificate().certificates.empty(); }

    TlsPair pair;
};

TEST_F(TlsReset, LetsAnObjectConnectAgain) {
    ASSERT_TRUE(ConnectsAgain());
    for (int round = 0; round < 3; ++round) {
        pair.client.Reset();
        EXPECT_TRUE(ConnectsAgain());
    }
}

TEST_F(TlsReset, KeepsTheSessionSoThatTheNextHandshakeResumesIt) {
    ASSERT_TRUE(ConnectsAgain());
    ASSERT_FALSE(HasResumed());
    handClockMs += 2000000;
    pair.client.Reset();
    EXPECT_TRUE(ConnectsAgain());
    EXPECT_TRUE(HasResumed());
}

TEST_F(TlsReset, ForgetsFlagsVersionSuiteAndCertificate) {
    ASSERT_TRUE(ConnectsAgain());
    pair.client.Feed(MakeRecord(23, "a bad MAC"));
    ASSERT_TRUE(pair.client.Failed());
    pair.client.Reset();
    EXPECT_FALSE(pair.client.Failed());
    EXPECT_FALSE(pair.client.HandshakeComplete());
    EXPECT_EQ(pair.client.ProtocolVersion(), 0);
    EXPECT_FALSE(pair.client.Suite().IsKnown());
    EXPECT_TRUE(pair.client.KeyExchangeCertificate().certificates.empty());
    EXPECT_EQ(pair.client.Send({}), "");
    EXPECT_TRUE(ConnectsAgain());
}

TEST_F(TlsReset, ForgetsAnAlertOfThePeersAndThatItWasAnswered) {
    const ByteString closure("\x01\x00", 2);
    pair.server.Feed(MakeRecord(21, "\x02\x28") + MakeRecord(21, closure));
    ASSERT_TRUE(pair.server.PeerAlertReceived());
    pair.server.Reset();
    EXPECT_FALSE(pair.server.PeerAlertReceived());
    pair.server.Feed(MakeRecord(21, closure));
    EXPECT_EQ(RecordTypes(pair.server.Send({})), std::vector<int>({21}));
}

TEST_F(TlsReset, ForgetsWhatWaitsInAnyBuffer) {
    pair.client.StartClientHandshake();
    pair.client.Send("waits for the end of the handshake");
    pair.client.Feed(MakeRecord(22, "\x02") + "\x16\x03\x01");
    pair.client.Feed(MakeRecord(20, "\x01"));
    pair.client.Reset();
    EXPECT_EQ(pair.client.Send({}), "");
    EXPECT_TRUE(ConnectsAgain());
}

TEST_F(TlsReset, ForgetsThatRecordsWereProtected) {
    ASSERT_TRUE(ConnectsAgain());
    pair.server.Reset();
    EXPECT_EQ(pair.server.Feed(MakeRecord(23, "in the clear")), "in the clear");
    EXPECT_EQ(pair.server.Send("held back"), "");
}

// A Finished completes the handshake, right or wrong; data would now leave without protection if a cipher were left.
TEST_F(TlsReset, ForgetsTheCipherSoThatDataStaysHeldBackUntilThereIsANewOne) {
    ASSERT_TRUE(ConnectsAgain());
    pair.client.Reset();
    pair.client.Feed(MakeRecord(22, ByteString("\x14\x00\x00\x00", 4)));
    ASSERT_TRUE(pair.client.HandshakeComplete());
    for (const int type : RecordTypes(pair.client.Send("held back"))) EXPECT_NE(type, 23);
}

TEST_F(TlsReset, ForgetsWhatItsOwnerHasSet) {
    pair.client.SetLogPrefix("CSTA: ");
    pair.client.SetExpectedDomain("pbx.velmora.example");
    pair.client.resumeSessions = true;
    pair.client.Reset();
    EXPECT_TRUE(pair.client.verifyCertificates);
    EXPECT_FALSE(pair.client.resumeSessions);
    EXPECT_EQ(Logged(5, [&] { pair.client.Feed(MakeRecord(99, "")); }),
              std::vector<ByteString>({"5 Received unknown type 99 on record layer"}));
    pair.client.StartClientHandshake();
    EXPECT_EQ(pair.client.Send({}).find("pbx.velmora.example"), ByteString::npos);
}

}  // namespace
}  // namespace velmora
