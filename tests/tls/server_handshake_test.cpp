// The server's side of the handshake, before a client that a test tells what to send.

#include <gtest/gtest.h>

#include <utility>

#include "crypto/rsa.h"
#include "crypto/trust_store.h"
#include "tests/support/fixed_random.h"
#include "tests/support/hand_clock.h"
#include "tests/support/hex.h"
#include "tests/support/logged.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"
#include "tls/session_cache.h"
#include "tls/tls_connection.h"

namespace velmora {
namespace {

using Texts = std::vector<ByteString>;

ByteString SuitesOf(const std::vector<unsigned>& numbers) {
    ByteString suites;
    for (const unsigned number : numbers) suites += BigEndian(number, 2);
    return suites;
}

class ServerHandshakeTest : public testing::Test {
protected:
    ServerHandshakeTest() {
        fixedRandomSequence = ByteString(1, '\x5A');
        fixedRandomTaken = 0;
        sessionCache.Clear();
        UseTlsIdentity("rsa1024");
        server.SetLogPrefix("CSTA: ");
    }
    ~ServerHandshakeTest() override {
        sessionCache.Clear();
        setOwnCertificate({}, {});
    }
    ServerHandshakeTest(const ServerHandshakeTest&) = delete;
    ServerHandshakeTest& operator=(const ServerHandshakeTest&) = delete;

    ByteString Answer(std::string_view stream) {
        received += server.Feed(stream);
        return server.Send({});
    }
    // The records, which the peer has received.
    std::vector<SeenRecord> AnswerToHello(const ClientHelloFields& fields = {}) {
        return peer.Receive(Answer(peer.SendClientHello(fields)));
    }
    static SeenMessage MessageIn(const SeenRecord& record) { return MessagesIn(record.fragment)[0]; }

    // The body of the ServerHello with which a new server answers.
    static ByteString ServerHelloTo(const ClientHelloFields& fields) {
        TlsConnection fresh;
        fresh.Feed(HandshakeRecord(MessageOf(1, fields.Body())));
        const std::vector<SeenRecord> records = RecordsIn(fresh.Send({}));
        return records.empty() || records[0].type != 22 ? "no ServerHello" : MessageIn(records[0]).body;
    }

    ByteString KeyExchange() {
        const CertificateChain certificate({pbx.certificate}, kSkipVerification);
        return peer.SendClientKeyExchange(certificate.modulus, certificate.exponent);
    }

    // From the key exchange to the server's Finished.
    void FinishFullHandshake(const ByteString& keyExchange) {
        const ByteString change = peer.SendChangeCipherSpec();
        const std::vector<SeenRecord> records = peer.Receive(Answer(keyExchange + change + peer.SendFinished()));
        ASSERT_EQ(records.size(), 2U);
        EXPECT_EQ(records[0], (SeenRecord{20, 0x0301, Octets({1})}));
        EXPECT_EQ(MessageIn(records[1]).type, 20U);
        EXPECT_TRUE(server.HandshakeComplete());
        EXPECT_FALSE(server.Failed());
    }

    void ExpectDataBothWays() {
        EXPECT_EQ(Answer(peer.SendRecord(23, "to the PBX")), "");
        EXPECT_EQ(received, "to the PBX");
        EXPECT_EQ(peer.Receive(server.Send("to the provider")),
                  (std::vector<SeenRecord>{{23, 0x0301, "to the provider"}}));
    }

    const TlsIdentity pbx = LoadTlsIdentity("rsa1024");
    TlsConnection server;
    ScriptedPeer peer{true};
    ByteString received;
};

// ------------------------------------------------------------------------------------------------ ClientHello

TEST_F(ServerHandshakeTest, AnswersAHelloWithServerHelloCertificateAndDone) {
    const ByteString answer = Answer(peer.SendClientHello());
    EXPECT_EQ(Outline(answer), "22:2 22:11 22:14");
    const std::vector<SeenRecord> records = RecordsIn(answer);
    EXPECT_EQ(toHex(MessageIn(records[0]).body),
              "0301"
              "5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a"
              "00"
              "0005"
              "00");
    EXPECT_EQ(MessageIn(records[1]).body, CertificateBody({pbx.certificate}));
    EXPECT_EQ(MessageIn(records[2]).body, "");
    EXPECT_FALSE(server.HandshakeComplete());
}

TEST_F(ServerHandshakeTest, SendsItsWholeChainLeafFirst) {
    setOwnCertificate({pbx.certificate, ClientAuthorityCertificate()}, pbx.privateKey);
    EXPECT_EQ(MessageIn(AnswerToHello()[1]).body, CertificateBody({pbx.certificate, ClientAuthorityCertificate()}));
}

TEST_F(ServerHandshakeTest, SendsAnEmptyListWithoutACertificateOfItsOwn) {
    setOwnCertificate({}, {});
    EXPECT_EQ(MessageIn(AnswerToHello()[1]).body, Octets({0, 0, 0}));
    EXPECT_EQ(Answer(peer.Send(16, Counted(2, "no block"))), "");
    EXPECT_FALSE(server.Failed());
}

TEST_F(ServerHandshakeTest, TakesTheVersionOfTheClientUpTo31) {
    const std::pair<unsigned, const char*> kVersions[] = {{0x0300, "0300"}, {0x0301, "0301"}, {0x0302, "0301"},
                                                          {0x0303, "0301"}, {0x0400, "0301"}, {0xFFFF, "0301"}};
    for (const auto& [version, answered] : kVersions) {
        EXPECT_EQ(toHex(ServerHelloTo({.version = version}).substr(0, 2)), answered) << version;
    }
}

TEST_F(ServerHandshakeTest, WritesVersion30IntoEveryRecordToAClientOf30) {
    const std::vector<SeenRecord> records = RecordsIn(Answer(peer.SendClientHello({.version = 0x0300})));
    ASSERT_EQ(records.size(), 3U);
    for (const SeenRecord& record : records) EXPECT_EQ(record.version, 0x0300U);
}

TEST_F(ServerHandshakeTest, RefusesAClientBelow30) {
    const std::pair<unsigned, const char*> kVersions[] = {
        {0x0200, "2.0"}, {0x02FF, "2.255"}, {0x0002, "0.2"}, {0x0000, "0.0"}};
    for (const auto& [version, text] : kVersions) {
        server = TlsConnection();
        server.SetLogPrefix("CSTA: ");
        ByteString answer;
        const ClientHelloFields hello = {.version = version};
        const Texts log = Logged(8, [&] { answer = Answer(HandshakeRecord(MessageOf(1, hello.Body()))); });
        EXPECT_EQ(log, Texts{"7 CSTA: SSL version " + ByteString(text) + " is not supported"});
        EXPECT_EQ(answer, RecordOf(21, Octets({2, 70})));
        EXPECT_TRUE(server.Failed());
    }
}

TEST_F(ServerHandshakeTest, TakesTheFirstSuiteOfTheClientThatItKnows) {
    const std::pair<std::vector<unsigned>, unsigned> kOffers[] = {
        {{0x0005, 0x002F}, 0x0005}, {{0x002F, 0x0005}, 0x002F},         {{0x0035, 0x0004}, 0x0035},
        {{0x0004}, 0x0004},         {{0xC02F, 0x000A, 0x0004}, 0x0004}, {{0x0004, 0x0035, 0x002F, 0x0005}, 0x0004}};
    for (const auto& [offer, chosen] : kOffers) {
        EXPECT_EQ(ServerHelloTo({.suites = SuitesOf(offer)}).substr(35, 2), BigEndian(chosen, 2)) << chosen;
    }
}

TEST_F(ServerHandshakeTest, RefusesAClientWithoutACommonSuite) {
    for (const std::vector<unsigned>& offer : {std::vector<unsigned>{}, {0xC02F, 0x000A, 0x0000, 0x0500}}) {
        server = TlsConnection();
        server.SetLogPrefix("CSTA: ");
        ByteString answer;
        const ClientHelloFields hello = {.suites = SuitesOf(offer)};
        const Texts log = Logged(8, [&] { answer = Answer(HandshakeRecord(MessageOf(1, hello.Body()))); });
        EXPECT_EQ(log, Texts{"5 CSTA: No common cipher suite in client hello"});
        EXPECT_EQ(answer, RecordOf(21, Octets({2, 40})));
        EXPECT_TRUE(server.Failed());
    }
}

TEST_F(ServerHandshakeTest, LooksNeitherAtCompressionMethodsNorAtExtensions) {
    AnswerToHello({.compressions = Octets({77}), .rest = Counted(2, Octets({0, 0, 0, 99, 1}))});
    FinishFullHandshake(KeyExchange());
    ExpectDataBothWays();
}

TEST_F(ServerHandshakeTest, SaysWhichDomainIsSetNotWhichTheClientAsksFor) {
    server.SetExpectedDomain("pbx.example");
    const Texts log = Logged(8, [&] { AnswerToHello(); });
    EXPECT_EQ(log, Texts{"7 CSTA: Received client hello for domain pbx.example"});
}

TEST_F(ServerHandshakeTest, SaysNothingOfADomainWhenNoneIsSet) {
    EXPECT_EQ(Logged(8, [&] { AnswerToHello(); }), Texts{});
}

TEST_F(ServerHandshakeTest, NamesNoSessionThoughItHasDrawnOneUnlessSessionsAreResumed) {
    const Texts log = Logged(9, [&] { EXPECT_EQ(MessageIn(AnswerToHello()[0]).body[34], 0); });
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[1].substr(0, 32), "9 CSTA: [5a5a5a5a]SendServerHell");
}

TEST_F(ServerHandshakeTest, NamesASessionOf32BytesWhenSessionsAreResumed) {
    server.resumeSessions = true;
    fixedRandomSequence =
        "0123456789ABCDEF0123456789abcdef"
        "session id: 32 bytes of its own.";
    const ByteString hello = MessageIn(AnswerToHello()[0]).body;
    EXPECT_EQ(hello.substr(2, 32), "0123456789ABCDEF0123456789abcdef");
    EXPECT_EQ(hello.substr(34, 33), " session id: 32 bytes of its own.");  // a blank is 32
    EXPECT_EQ(hello.substr(67), Octets({0, 5, 0}));
}

TEST_F(ServerHandshakeTest, AnswersEveryHelloAnew) {
    AnswerToHello();
    EXPECT_EQ(Outline(Answer(peer.SendClientHello({.suites = SuitesOf({0x0004})}))), "22:2 22:11 22:14");
    EXPECT_EQ(server.Suite().number, 0x0004);
}

// ------------------------------------------------------------------------------------------------ key exchange

TEST_F(ServerHandshakeTest, ChangesItsKeysBehindTheClientAndFinishesLast) {
    AnswerToHello();
    EXPECT_EQ(Answer(KeyExchange()), "");
    const ByteString change = Answer(peer.SendChangeCipherSpec());
    EXPECT_EQ(change, RecordOf(20, Octets({1})));
    peer.Receive(change);
    EXPECT_FALSE(server.HandshakeComplete());
    const ByteString finished = peer.SendFinished();
    const ByteString verifyData = peer.VerifyData(false);
    EXPECT_EQ(peer.Receive(Answer(finished)), (std::vector<SeenRecord>{{22, 0x0301, MessageOf(20, verifyData)}}));
    EXPECT_TRUE(server.HandshakeComplete());
    ExpectDataBothWays();
}

TEST_F(ServerHandshakeTest, ReadsNeitherThePaddingNorTheVersionOfThePreMasterSecret) {
    const CertificateChain certificate({pbx.certificate}, kSkipVerification);
    AnswerToHello();
    const ByteString preMaster = Octets({9, 9}) + ByteString(46, 'q');
    const ByteString block = Octets({0, 77}) + ByteString(78, '\0') + preMaster;
    RsaKey key;
    setPublicKey(key, certificate.exponent, certificate.modulus);
    peer.SetPreMaster(preMaster);
    FinishFullHandshake(peer.Send(16, Counted(2, rsaPublic(key, block))));
    ExpectDataBothWays();
}

TEST_F(ServerHandshakeTest, TakesAsMuchOfTheKeyExchangeAsItsLengthSays) {
    const CertificateChain certificate({pbx.certificate}, kSkipVerification);
    AnswerToHello();
    ScriptedPeer twin = peer;
    const ByteString record = twin.SendClientKeyExchange(certificate.modulus, certificate.exponent);
    peer.SetMaster(twin.master);
    FinishFullHandshake(peer.Send(16, MessagesIn(RecordsIn(record)[0].fragment)[0].body + "and more"));
}

TEST_F(ServerHandshakeTest, TakesTheWholeKeyExchangeUnder30) {
    const CertificateChain certificate({pbx.certificate}, kSkipVerification);
    RsaKey key;
    setPublicKey(key, certificate.exponent, certificate.modulus);
    const ByteString preMaster = Octets({3, 0}) + ByteString(46, 'q');
    const ByteString encrypted = rsaPublic(key, Octets({0, 2}) + ByteString(77, 'x') + Octets({0}) + preMaster);
    Answer(peer.SendClientHello({.version = 0x0300}));
    const Texts log = Logged(9, [&] { Answer(peer.Send(16, encrypted)); });
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[1], "9 CSTA: [5a5a5a5a]Pre Master Secret(" + toHex(preMaster) + ")");
}

TEST_F(ServerHandshakeTest, IgnoresAKeyExchangeBeforeASuiteIsChosen) {
    ByteString answer;
    const Texts log = Logged(8, [&] { answer = Answer(peer.Send(16, Counted(2, "block"))); });
    EXPECT_EQ(log, Texts{"1 CSTA: Unknown Cipher"});
    EXPECT_EQ(answer, "");
    EXPECT_FALSE(server.Failed());
}

TEST_F(ServerHandshakeTest, SaysUnknownCipherAtLevel1) {
    EXPECT_EQ(Logged(1, [&] { Answer(peer.Send(16, "")); }), Texts{"1 CSTA: Unknown Cipher"});
}

TEST_F(ServerHandshakeTest, IgnoresACertificateVerify) {
    AnswerToHello();
    const ByteString keyExchange = KeyExchange();
    FinishFullHandshake(keyExchange + peer.Send(15, Counted(2, "not signed")));
    ExpectDataBothWays();
}

TEST_F(ServerHandshakeTest, RefusesAWrongFinishedAndYetSendsItsOwnBehindTheAlert) {
    AnswerToHello();
    const ByteString keyExchange = KeyExchange();
    const ByteString change = peer.SendChangeCipherSpec();
    std::vector<SeenRecord> records;
    const Texts log = Logged(3, [&] { records = peer.Receive(Answer(keyExchange + change + peer.Send(20, "wrong"))); });
    EXPECT_EQ(log, Texts{"3 CSTA: Finished failed"});
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[1], (SeenRecord{21, 0x0301, Octets({2, 21})}));
    EXPECT_EQ(MessageIn(records[2]).type, 20U);
    EXPECT_TRUE(server.HandshakeComplete());
    EXPECT_TRUE(server.Failed());
    EXPECT_EQ(Answer(peer.SendRecord(23, "data")), "");
    EXPECT_EQ(received, "");
}

TEST_F(ServerHandshakeTest, TheServersOwnProofIsNotTheClients) {
    AnswerToHello();
    const ByteString keyExchange = KeyExchange();
    const ByteString change = peer.SendChangeCipherSpec();
    Answer(keyExchange + change + peer.Send(20, peer.VerifyData(false)));
    EXPECT_TRUE(server.Failed());
}

// ------------------------------------------------------------------------------------------------ sessions

class ServerResumptionTest : public ServerHandshakeTest {
protected:
    // A session of a full handshake; then a new server.
    ServerResumptionTest() {
        handClockMs = 5000000;
        server.resumeSessions = true;
        AnswerToHello();
        FinishFullHandshake(KeyExchange());
        sessionId = peer.sessionId;
        StartOver();
    }
    ~ServerResumptionTest() override { handClockMs = 3600000; }
    ServerResumptionTest(const ServerResumptionTest&) = delete;
    ServerResumptionTest& operator=(const ServerResumptionTest&) = delete;

    void StartOver() {
        const ByteString master = peer.master;
        server = TlsConnection();
        server.resumeSessions = true;
        server.SetLogPrefix("CSTA: ");
        peer = ScriptedPeer(true);
        peer.SetMaster(master);
        fixedRandomSequence = ByteString(1, '\x77');
    }
    ClientHelloFields Offer() const { return {.random = ByteString(32, 'C'), .sessionId = sessionId}; }

    // The server has resumed the session; brings the handshake to its end.
    void ExpectResumed(const ByteString& answer) {
        const std::vector<SeenRecord> records = peer.Receive(answer);
        ASSERT_EQ(records.size(), 3U);
        EXPECT_EQ(MessageIn(records[0]).type, 2U);
        EXPECT_EQ(peer.sessionId, sessionId);
        EXPECT_EQ(records[1], (SeenRecord{20, 0x0301, Octets({1})}));
        peer.transcript.resize(peer.transcript.size() - 16);
        EXPECT_EQ(MessageIn(records[2]).body, peer.VerifyData(false));
        peer.transcript += records[2].fragment;
        const ByteString change = peer.SendChangeCipherSpec();
        EXPECT_EQ(Answer(change + peer.SendFinished()), "") << "its Finished is out";
        EXPECT_TRUE(server.HandshakeComplete());
        EXPECT_FALSE(server.Failed());
        received.clear();
        ExpectDataBothWays();
    }

    ByteString sessionId;
};

TEST_F(ServerResumptionTest, ASessionThatWasStoredAMomentAgoIsForgottenAndAFullHandshakeFollows) {
    ByteString answer;
    const Texts log = Logged(8, [&] { answer = Answer(peer.SendClientHello(Offer())); });
    EXPECT_EQ(log, Texts{"7 CSTA: Session " + toHex(sessionId) + " not found"});
    EXPECT_EQ(Outline(answer), "22:2 22:11 22:14");
    EXPECT_EQ(sessionCache.Count(), 0U);
    peer.Receive(answer);
    EXPECT_EQ(peer.sessionId, ByteString(32, '\x77')) << "drawn anew";
    FinishFullHandshake(KeyExchange());
    EXPECT_EQ(sessionCache.Count(), 1U);
}

TEST_F(ServerResumptionTest, ASessionIsResumedOnlyOnceItsTimeHasPassed) {
    handClockMs += 1095000;  // 5 + 12000 / 11 seconds
    ByteString answer;
    const Texts log = Logged(8, [&] { answer = Answer(peer.SendClientHello(Offer())); });
    EXPECT_EQ(log, Texts{"7 CSTA: Resuming session " + toHex(sessionId)});
    ExpectResumed(answer);
}

TEST_F(ServerResumptionTest, ASecondBeforeItsTimeASessionIsForgotten) {
    handClockMs += 1094000;
    EXPECT_EQ(Outline(Answer(peer.SendClientHello(Offer()))), "22:2 22:11 22:14");
    StartOver();
    handClockMs += 1000000000;
    EXPECT_EQ(Outline(Answer(peer.SendClientHello(Offer()))), "22:2 22:11 22:14");
}

TEST_F(ServerResumptionTest, AResumedSessionHasToWaitAgain) {
    handClockMs += 2000000;
    ExpectResumed(Answer(peer.SendClientHello(Offer())));
    StartOver();
    handClockMs += 1095000;
    ExpectResumed(Answer(peer.SendClientHello(Offer())));
    StartOver();
    handClockMs += 1094000;
    EXPECT_EQ(Outline(Answer(peer.SendClientHello(Offer()))), "22:2 22:11 22:14");
}

TEST_F(ServerResumptionTest, AResumedSessionKeepsItsSuiteWhateverTheClientOffers) {
    handClockMs += 2000000;
    ClientHelloFields offer = Offer();
    offer.suites = SuitesOf({0x0035});
    ExpectResumed(Answer(peer.SendClientHello(offer)));
    EXPECT_EQ(server.Suite().number, 0x0005);
}

TEST_F(ServerResumptionTest, ASessionIsResumedEvenForAClientWithoutACommonSuite) {
    handClockMs += 2000000;
    ClientHelloFields offer = Offer();
    offer.suites = "";
    ExpectResumed(Answer(peer.SendClientHello(offer)));
}

TEST_F(ServerResumptionTest, AnUnknownSessionIsNotFound) {
    handClockMs += 2000000;
    const Texts log =
        Logged(8, [&] { AnswerToHello({.random = ByteString(32, 'C'), .sessionId = sessionId.substr(1)}); });
    EXPECT_EQ(log, Texts{"7 CSTA: Session " + toHex(sessionId.substr(1)) + " not found"});
    EXPECT_EQ(sessionCache.Count(), 1U);
}

TEST_F(ServerResumptionTest, NothingIsLookedUpUnlessSessionsAreResumed) {
    handClockMs += 2000000;
    server.resumeSessions = false;
    ByteString answer;
    EXPECT_EQ(Logged(8, [&] { answer = Answer(peer.SendClientHello(Offer())); }), Texts{});
    EXPECT_EQ(Outline(answer), "22:2 22:11 22:14");
    EXPECT_EQ(MessageIn(RecordsIn(answer)[0]).body[34], 0);
    EXPECT_EQ(sessionCache.Count(), 1U);
}

TEST_F(ServerResumptionTest, NothingIsLookedUpForAHelloWithoutASession) {
    EXPECT_EQ(Logged(8, [&] { AnswerToHello(); }), Texts{});
}

TEST_F(ServerResumptionTest, ASessionIsStoredWithTheKeyExchange) {
    sessionCache.Clear();
    AnswerToHello();
    EXPECT_EQ(sessionCache.Count(), 0U);
    Answer(KeyExchange());
    EXPECT_EQ(sessionCache.Count(), 1U);
}

TEST_F(ServerHandshakeTest, StoresNoSessionUnlessSessionsAreResumed) {
    AnswerToHello({.sessionId = "a session of the client"});
    FinishFullHandshake(KeyExchange());
    EXPECT_EQ(sessionCache.Count(), 0U);
}

// ------------------------------------------------------------------------------------------------ both ends

class TwoEndsTest : public ServerHandshakeTest {
protected:
    TwoEndsTest() {
        fixedRandomSequence = "random bytes, not all the same";
        pair.server.resumeSessions = true;
    }

    // The client's object goes on with a new connection, to a new server.
    void Reconnect() {
        pair.client.Reset();
        pair.client.verifyCertificates = false;
        pair.server = TlsConnection();
        pair.server.resumeSessions = true;
        pair.server.SetLogPrefix("PBX: ");
    }
    Texts HandshakeLog() {
        return Logged(8, [&] { pair.Handshake(); });
    }
    void ExpectDataBothWaysInPair() {
        EXPECT_TRUE(pair.client.HandshakeComplete() && pair.server.HandshakeComplete());
        EXPECT_FALSE(pair.client.Failed() || pair.server.Failed());
        EXPECT_EQ(pair.server.Feed(pair.client.Send("to the PBX")), "to the PBX");
        EXPECT_EQ(pair.client.Feed(pair.server.Send("to the provider")), "to the provider");
    }

    TlsPair pair;
};

TEST_F(TwoEndsTest, ResumeASessionAfterReset) {
    pair.Handshake();
    ExpectDataBothWaysInPair();
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        handClockMs += 1095000;
        Reconnect();
        const Texts log = HandshakeLog();
        ASSERT_EQ(log.size(), 1U);
        EXPECT_EQ(log[0].substr(0, 24), "7 PBX: Resuming session ");
        ExpectDataBothWaysInPair();
    }
}

TEST_F(TwoEndsTest, RunAFullHandshakeAfterResetWhenTheSessionIsNotToBeResumed) {
    pair.Handshake();
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        Reconnect();
        const Texts log = HandshakeLog();
        ASSERT_EQ(log.size(), 1U);
        EXPECT_EQ(log[0].substr(0, 15), "7 PBX: Session ");
        ExpectDataBothWaysInPair();
    }
}

TEST_F(TwoEndsTest, RunAFullHandshakeAfterResetWithAServerThatResumesNone) {
    pair.server.resumeSessions = false;
    pair.Handshake();
    Reconnect();
    pair.server.resumeSessions = false;
    EXPECT_EQ(HandshakeLog(), Texts{});
    ExpectDataBothWaysInPair();
}

TEST_F(TwoEndsTest, AgreeWithKeysOf1024To4096Bits) {
    for (const char* identity : {"rsa1024", "rsa2048", "rsa4096"}) {
        SCOPED_TRACE(identity);
        UseTlsIdentity(identity);
        pair = TlsPair();
        pair.Handshake();
        ExpectDataBothWaysInPair();
        EXPECT_EQ(pair.client.Suite().number, 0x002F);
    }
}

}  // namespace
}  // namespace velmora
