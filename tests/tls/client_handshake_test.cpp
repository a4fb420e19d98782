// The client's side of the handshake, before a peer that a test tells what to send.

#include <gtest/gtest.h>

#include <algorithm>

#include "crypto/certificate_chain.h"
#include "crypto/md5.h"
#include "crypto/rsa.h"
#include "crypto/sha1.h"
#include "crypto/trust_store.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/support/fixed_random.h"
#include "tests/support/hex.h"
#include "tests/support/logged.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/tls_identity.h"
#include "tls/tls_connection.h"

namespace velmora {
namespace {

constexpr unsigned kUnknownSuite = 0x1234;

// A Name as an authority in a CertificateRequest is one.
ByteString AuthorityNamed(std::string_view name) {
    return derElement(0x30, nameContent(name));
}

class ClientHandshakeTest : public testing::Test {
protected:
    ClientHandshakeTest() {
        fixedRandomSequence = ByteString(1, '\x5A');
        fixedRandomTaken = 0;
        client.verifyCertificates = false;
        client.SetLogPrefix("CSTA: ");
        setOwnCertificate({}, {});
    }
    ~ClientHandshakeTest() override { setOwnCertificate({}, {}); }
    ClientHandshakeTest(const ClientHandshakeTest&) = delete;
    ClientHandshakeTest& operator=(const ClientHandshakeTest&) = delete;

    // The ClientHello; the peer has received it.
    ByteString Start() {
        client.StartClientHandshake();
        const ByteString hello = client.Send({});
        peer.Receive(hello);
        return hello;
    }

    // What the client says to these bytes.
    ByteString Answer(std::string_view stream) {
        received += client.Feed(stream);
        return client.Send({});
    }

    // ServerHello and Certificate.
    ByteString HelloAndCertificate(const ServerHelloFields& hello = {}) {
        const ByteString helloRecord = peer.SendServerHello(hello);
        return helloRecord + peer.Send(11, CertificateBody({pbx.certificate}));
    }
    ByteString Flight(const ServerHelloFields& hello = {}) {
        const ByteString start = HelloAndCertificate(hello);
        return start + peer.Send(14, "");
    }

    // Takes the client's flight and the secret in it; the records.
    std::vector<SeenRecord> TakeFlight(const ByteString& flight) {
        for (const SeenRecord& record : RecordsIn(flight)) {
            if (record.type != 22) break;
            const SeenMessage message = MessagesIn(record.fragment)[0];
            if (message.type == 16) DecryptSecret(message.body.substr(2));
        }
        return peer.Receive(flight);
    }
    void DecryptSecret(const ByteString& encrypted) {
        block = rsaPrivate(PrivateKey(pbx), encrypted);
        peer.SetPreMaster(block.substr(block.size() - 48));
    }
    static RsaKey PrivateKey(const TlsIdentity& identity) {
        const CertificateChain chain({identity.certificate}, identity.privateKey);
        RsaKey key;
        setPrivateKey(key, chain.keyPrivateExponent, chain.keyPublicExponent, chain.keyModulus, chain.keyPrime1,
                      chain.keyPrime2);
        return key;
    }

    // Brings a full handshake to its end.
    void Complete(const ServerHelloFields& hello = {}) {
        Start();
        TakeFlight(Answer(Flight(hello)));
        const ByteString change = peer.SendChangeCipherSpec();
        EXPECT_EQ(Answer(change + peer.SendFinished()), "");
        EXPECT_TRUE(client.HandshakeComplete());
        EXPECT_FALSE(client.Failed());
    }

    // What the peer gets of application data, and the client of the peer's.
    void ExpectDataBothWays() {
        const std::vector<SeenRecord> records = peer.Receive(client.Send("to the PBX"));
        EXPECT_EQ(records, (std::vector<SeenRecord>{{23, 0x0301, "to the PBX"}}));
        received.clear();
        EXPECT_EQ(Answer(peer.SendRecord(23, "to the provider")), "");
        EXPECT_EQ(received, "to the provider");
    }

    // A flight with this request in it, and the client's answer.
    std::vector<SeenRecord> AnswerToRequest(const ByteString& request) {
        Start();
        const ByteString start = HelloAndCertificate();
        const ByteString asked = start + peer.Send(13, request);
        return TakeFlight(Answer(asked + peer.Send(14, "")));
    }
    // The types of the client's handshake messages in clear and encrypted records.
    static std::vector<unsigned> MessageTypes(const std::vector<SeenRecord>& records) {
        std::vector<unsigned> types;
        for (const SeenRecord& record : records) {
            if (record.type == 22) types.push_back(MessagesIn(record.fragment)[0].type);
        }
        return types;
    }
    static SeenMessage MessageIn(const SeenRecord& record) { return MessagesIn(record.fragment)[0]; }

    const TlsIdentity pbx = LoadTlsIdentity("rsa1024");
    TlsConnection client;
    ScriptedPeer peer{false};
    ByteString received;
    ByteString block;  // what the client encrypted last
};

using Types = std::vector<unsigned>;

// ------------------------------------------------------------------------------------------------ ClientHello

TEST_F(ClientHandshakeTest, ClientHelloHasEveryFieldInPlaceAndNoExtensionsWithoutADomain) {
    client.StartClientHandshake();
    EXPECT_EQ(toHex(client.Send({})),
              "1603010033"
              "0100002f"
              "0301"
              "5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a"
              "00"
              "0008002f003500040005"
              "0100");
    EXPECT_EQ(client.ProtocolVersion(), 0x0301);
}

TEST_F(ClientHandshakeTest, ClientHelloTakesItsRandomByteAfterByte) {
    fixedRandomSequence = "0123456789ABCDEF0123456789abcdef";
    EXPECT_EQ(Start().substr(11, 32), fixedRandomSequence);
}

TEST_F(ClientHandshakeTest, ClientHelloNamesTheDomain) {
    client.SetExpectedDomain("pbx.example");
    const ByteString body = MessagesIn(RecordsIn(Start())[0].fragment)[0].body;
    EXPECT_EQ(body.substr(0, 35 + 10 + 2).size() + 2 + 20, body.size());
    EXPECT_EQ(toHex(body.substr(47)),
              "0014"
              "0000"
              "0010"
              "000e"
              "00"
              "000b" +
                  toHex("pbx.example"));
}

TEST_F(ClientHandshakeTest, ClientHelloNamesTheLongestDomainThatItsLengthsCanSayAndNoneAboveThat) {
    const size_t bare = MessagesIn(RecordsIn(Start())[0].fragment)[0].body.size();
    const auto helloFor = [](size_t domainBytes) {
        TlsConnection asking;
        asking.SetExpectedDomain(ByteString(domainBytes, 'd'));
        asking.StartClientHandshake();
        ByteString fragments;
        for (const SeenRecord& record : RecordsIn(asking.Send({}))) fragments += record.fragment;
        return MessagesIn(fragments)[0].body;
    };
    const ByteString longest = helloFor(65526);
    EXPECT_EQ(longest.size(), bare + 2 + 65535);
    EXPECT_EQ(toHex(longest.substr(bare, 11)),
              "ffff"
              "0000"
              "fffb"
              "fff9"
              "00"
              "fff6");
    EXPECT_EQ(helloFor(65527).size(), bare);
    EXPECT_EQ(helloFor(65530).size(), bare);
    EXPECT_EQ(helloFor(70000).size(), bare);
}

TEST_F(ClientHandshakeTest, ClientHelloOffersTheSessionThatTheServerNamedBefore) {
    Complete({.sessionId = "thirty-two bytes of a session id"});
    client.Reset();
    client.StartClientHandshake();
    const ByteString hello = client.Send({});
    EXPECT_EQ(hello.substr(43, 33), " thirty-two bytes of a session id");  // a blank is 32
    EXPECT_EQ(toHex(hello.substr(76, 10)), "0008002f003500040005");
}

TEST_F(ClientHandshakeTest, ClientHelloOffersNoSessionWhenTheServerNamedNone) {
    Complete();
    client.Reset();
    client.StartClientHandshake();
    EXPECT_EQ(client.Send({}).substr(43, 3), Octets({0, 0, 8}));
}

// ------------------------------------------------------------------------------------------------ ServerHello

TEST_F(ClientHandshakeTest, AServerBelowTls10GetsOneAlertAndNothingElse) {
    for (const unsigned version : {0x0300U, 0x02FFU, 0x0000U}) {
        SCOPED_TRACE(version);
        TlsConnection asking;
        asking.StartClientHandshake();
        asking.Send({});
        ScriptedPeer old(false);
        asking.Feed(old.SendServerHello({.version = version}));
        EXPECT_EQ(asking.Send({}), RecordOf(21, Octets({2, 70})));
        EXPECT_TRUE(asking.Failed());
    }
}

TEST_F(ClientHandshakeTest, AServerBelowTls10GetsOneAlertEvenWhenItsWholeFlightIsInOneRecord) {
    Start();
    const ByteString messages = MessageOf(2, ServerHelloFields{.version = 0x0300}.Body()) +
                                MessageOf(11, CertificateBody({pbx.certificate})) + MessageOf(14, "");
    EXPECT_EQ(Outline(Answer(HandshakeRecord(messages))), "21:2,70");
    EXPECT_EQ(client.Suite().number, 0);
}

TEST_F(ClientHandshakeTest, AServerBelowTls10GetsOneAlertEvenWhenItsWholeFlightIsInOneChunk) {
    Start();
    EXPECT_EQ(Outline(Answer(Flight({.version = 0x0300}))), "21:2,70");
}

TEST_F(ClientHandshakeTest, GoesOnInTls10WhenTheServerNamesALaterVersion) {
    for (const unsigned version : {0x0302U, 0x0303U, 0x0400U, 0xFFFFU}) {
        SCOPED_TRACE(version);
        client = TlsConnection();
        client.verifyCertificates = false;
        peer = ScriptedPeer(false);
        Complete({.version = version});
        EXPECT_EQ(client.ProtocolVersion(), 0x0301);
        ExpectDataBothWays();
        EXPECT_EQ(block.substr(block.size() - 48, 2), Octets({3, 1}));
    }
}

TEST_F(ClientHandshakeTest, WritesVersion31IntoEveryRecordAfterAServerHelloOf33) {
    Start();
    const std::vector<SeenRecord> records = TakeFlight(Answer(Flight({.version = 0x0303})));
    ASSERT_EQ(records.size(), 3U);
    for (const SeenRecord& record : records) EXPECT_EQ(record.version, 0x0301U);
}

TEST_F(ClientHandshakeTest, LooksNeitherAtTheCompressionNorAtExtensions) {
    Complete({.compression = 99, .rest = Counted(2, Octets({0xFF, 0x01, 0, 1, 0}))});
    ExpectDataBothWays();
}

TEST_F(ClientHandshakeTest, TakesASuiteThatNobodyKnowsAndSendsNoKeyExchange) {
    Start();
    const std::vector<SeenRecord> records = peer.Receive(Answer(Flight({.suite = kUnknownSuite})));
    EXPECT_EQ(MessageTypes(records), (Types{20}));
    EXPECT_EQ(client.Suite().number, kUnknownSuite);
    EXPECT_FALSE(client.Suite().IsKnown());
}

TEST_F(ClientHandshakeTest, HoldsDataBackForeverUnderASuiteThatNobodyKnows) {
    Start();
    peer.Receive(Answer(Flight({.suite = kUnknownSuite})));
    const ByteString change = peer.SendChangeCipherSpec();
    EXPECT_EQ(Answer(change + peer.SendFinished()), "");
    EXPECT_TRUE(client.HandshakeComplete());
    EXPECT_FALSE(client.Failed());
    EXPECT_EQ(client.Send("data"), "");
    EXPECT_EQ(client.Send("more"), "");
}

TEST_F(ClientHandshakeTest, TakesRecordsInTheClearUnderASuiteThatNobodyKnows) {
    Start();
    peer.Receive(Answer(Flight({.suite = kUnknownSuite})));
    Answer(peer.SendChangeCipherSpec());
    Answer(RecordOf(23, "in the clear"));
    EXPECT_EQ(received, "in the clear");
}

// ------------------------------------------------------------------------------------------------ the flight

TEST_F(ClientHandshakeTest, AnswersServerHelloDoneWithKeyExchangeChangeAndFinished) {
    Start();
    EXPECT_EQ(Answer(HelloAndCertificate()), "");
    const std::vector<SeenRecord> records = TakeFlight(Answer(peer.Send(14, "")));
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(MessageTypes(records), (Types{16, 20}));
    EXPECT_EQ(records[1], (SeenRecord{20, 0x0301, Octets({1})}));
    EXPECT_EQ(MessageIn(records[2]).body.size(), 12U);
}

TEST_F(ClientHandshakeTest, EncryptsThePreMasterSecretInABlockAsLongAsTheModulus) {
    fixedRandomSequence = "0123456789";
    Start();
    const std::vector<SeenRecord> records = TakeFlight(Answer(Flight()));
    const ByteString body = MessageIn(records[0]).body;
    EXPECT_EQ(body.size(), 2U + 128U);
    EXPECT_EQ(toHex(body.substr(0, 2)), "0080");
    // 32 bytes have gone into the client random, 46 into the secret, and then 128 - 51 into the padding.
    ByteString digits;
    while (digits.size() < 200) digits += fixedRandomSequence;
    EXPECT_EQ(block, Octets({0, 2}) + digits.substr(78, 77) + Octets({0, 3, 1}) + digits.substr(32, 46));
}

TEST_F(ClientHandshakeTest, DrawsPaddingBytesOf0AndFFAgain) {
    fixedRandomSequence = Octets({0x00, 0x41, 0xFF, 0x42, 0x01, 0xFE});
    Start();
    TakeFlight(Answer(Flight()));
    const ByteString padding = block.substr(2, 77);
    EXPECT_EQ(padding.find_first_not_of(Octets({0x41, 0x42, 0x01, 0xFE})), ByteString::npos);
    for (const char byte : Octets({0x41, 0x42, 0x01, 0xFE}))
        EXPECT_GE(std::count(padding.begin(), padding.end(), byte), 15);
    EXPECT_EQ(block.substr(79, 3), Octets({0, 3, 1}));
}

TEST_F(ClientHandshakeTest, ProvesTheHandshakeWithItsFinished) {
    Start();
    const ByteString answer = Answer(Flight());
    const std::vector<SeenRecord> records = TakeFlight(answer);
    const SeenMessage finished = MessageIn(records[2]);
    peer.transcript.resize(peer.transcript.size() - 16);  // as it was before the Finished
    EXPECT_EQ(toHex(finished.body), toHex(peer.VerifyData(true)));
}

TEST_F(ClientHandshakeTest, IsCompleteWithTheServersFinishedAndNotBefore) {
    Start();
    TakeFlight(Answer(Flight()));
    EXPECT_FALSE(client.HandshakeComplete());
    EXPECT_EQ(Answer(peer.SendChangeCipherSpec()), "");
    EXPECT_FALSE(client.HandshakeComplete());
    EXPECT_EQ(Answer(peer.SendFinished()), "");
    EXPECT_TRUE(client.HandshakeComplete());
    ExpectDataBothWays();
}

TEST_F(ClientHandshakeTest, HoldsDataBackUntilTheFirstSendAfterTheServersFinished) {
    Start();
    EXPECT_EQ(client.Send("one "), "");
    client.Feed(Flight());
    const std::vector<SeenRecord> flight = TakeFlight(client.Send("two "));
    EXPECT_EQ(flight.size(), 3U);
    client.Feed(peer.SendChangeCipherSpec());
    EXPECT_EQ(client.Send("three "), "");
    client.Feed(peer.SendFinished());
    EXPECT_EQ(peer.Receive(client.Send("four")), (std::vector<SeenRecord>{{23, 0x0301, "one two three four"}}));
    EXPECT_EQ(client.Send({}), "");
}

TEST_F(ClientHandshakeTest, RefusesToExchangeKeysWithoutACertificate) {
    Start();
    const ByteString hello = peer.SendServerHello();
    EXPECT_EQ(Outline(Answer(hello + peer.Send(14, ""))), "21:2,43");
    EXPECT_TRUE(client.Failed());
}

TEST_F(ClientHandshakeTest, AnswersEveryServerHelloDoneWithAFlight) {
    Start();
    TakeFlight(Answer(Flight()));
    EXPECT_EQ(RecordsIn(Answer(peer.Send(14, ""))).size(), 3U);
}

TEST_F(ClientHandshakeTest, TakesTheCertificateBeforeTheHelloAsWell) {
    Start();
    const ByteString certificate = peer.Send(11, CertificateBody({pbx.certificate}));
    const ByteString hello = peer.SendServerHello();
    EXPECT_EQ(MessageTypes(TakeFlight(Answer(certificate + hello + peer.Send(14, "")))), (Types{16, 20}));
}

TEST_F(ClientHandshakeTest, UsesTheLastOfSeveralCertificates) {
    Start();
    const ByteString other = peer.Send(11, CertificateBody({LoadTlsIdentity("rsa2048").certificate}));
    TakeFlight(Answer(other + Flight()));
    EXPECT_EQ(block.substr(0, 2), Octets({0, 2}));
}

// ------------------------------------------------------------------------------------------------ Finished

TEST_F(ClientHandshakeTest, AWrongFinishedEndsTheConnectionAndYetTheHandshakeCountsAsComplete) {
    Start();
    TakeFlight(Answer(Flight()));
    ByteString wrong = peer.VerifyData(false);
    wrong[11] = static_cast<char>(wrong[11] ^ 1);
    const ByteString change = peer.SendChangeCipherSpec();
    ByteString answer;
    const std::vector<ByteString> log = Logged(3, [&] { answer = Answer(change + peer.Send(20, wrong)); });
    EXPECT_EQ(log, std::vector<ByteString>{"3 CSTA: Finished failed"});
    EXPECT_EQ(peer.Receive(answer), (std::vector<SeenRecord>{{21, 0x0301, Octets({2, 21})}}));
    EXPECT_TRUE(client.HandshakeComplete());
    EXPECT_TRUE(client.Failed());
}

TEST_F(ClientHandshakeTest, AFinishedOfAnotherLengthIsWrong) {
    for (const size_t bytes : {0U, 11U, 13U}) {
        SCOPED_TRACE(bytes);
        client = TlsConnection();
        client.verifyCertificates = false;
        peer = ScriptedPeer(false);
        Start();
        TakeFlight(Answer(Flight()));
        ByteString verifyData = peer.VerifyData(false);
        verifyData.resize(bytes);
        const ByteString change = peer.SendChangeCipherSpec();
        EXPECT_EQ(peer.Receive(Answer(change + peer.Send(20, verifyData)))[0].fragment, Octets({2, 21}));
    }
}

TEST_F(ClientHandshakeTest, TheClientsOwnProofIsNotTheServers) {
    Start();
    TakeFlight(Answer(Flight()));
    const ByteString change = peer.SendChangeCipherSpec();
    Answer(change + peer.Send(20, peer.VerifyData(true)));
    EXPECT_TRUE(client.Failed());
}

TEST_F(ClientHandshakeTest, GoesOnSendingDataAfterAWrongFinished) {
    Start();
    TakeFlight(Answer(Flight()));
    const ByteString change = peer.SendChangeCipherSpec();
    peer.Receive(Answer(change + peer.Send(20, "wrong")));
    EXPECT_EQ(peer.Receive(client.Send("data"))[0].fragment, "data");
}

TEST_F(ClientHandshakeTest, LooksAtNothingAfterAnAlertOfItsOwn) {
    Start();
    TakeFlight(Answer(Flight()));
    const ByteString change = peer.SendChangeCipherSpec();
    const ByteString wrong = peer.Send(20, "wrong");
    peer.Receive(Answer(change + wrong + peer.SendRecord(23, "in the same chunk")));
    EXPECT_EQ(Answer(peer.SendRecord(23, "later")), "");
    EXPECT_EQ(Answer(peer.Send(14, "")), "");
    EXPECT_EQ(Answer(peer.SendRecord(21, Octets({1, 0}))), "");
    EXPECT_EQ(received, "");
    EXPECT_FALSE(client.PeerAlertReceived());
}

TEST_F(ClientHandshakeTest, LooksAtNoMessageBehindAWrongFinishedInTheSameRecord) {
    Start();
    TakeFlight(Answer(Flight()));
    Answer(peer.SendChangeCipherSpec());
    const ByteString answer = Answer(peer.SendRecord(22, MessageOf(20, "wrong") + MessageOf(14, "")));
    EXPECT_EQ(RecordsIn(answer).size(), 1U);
}

TEST_F(ClientHandshakeTest, ProcessesAFinishedWheneverItArrives) {
    Start();
    EXPECT_EQ(Outline(Answer(HandshakeRecord(MessageOf(20, "early")))), "21:2,21 22:20");
    EXPECT_TRUE(client.HandshakeComplete());
}

TEST_F(ClientHandshakeTest, ProcessesAChangeCipherSpecWheneverItArrives) {
    Start();
    EXPECT_EQ(Answer(RecordOf(20, Octets({1}))), RecordOf(20, Octets({1})));
    EXPECT_EQ(Answer(RecordOf(20, Octets({1}))), "") << "it has changed already";
}

TEST_F(ClientHandshakeTest, GoesOnAfterAFatalAlertOfThePeer) {
    Start();
    EXPECT_EQ(Answer(RecordOf(21, Octets({2, 40}))), "");
    EXPECT_TRUE(client.PeerAlertReceived());
    EXPECT_FALSE(client.Failed());
    TakeFlight(Answer(Flight()));
    const ByteString change = peer.SendChangeCipherSpec();
    Answer(change + peer.SendFinished());
    EXPECT_FALSE(client.Failed());
    ExpectDataBothWays();
}

TEST_F(ClientHandshakeTest, HandsOutApplicationDataInTheClearBeforeTheHandshake) {
    Start();
    Answer(RecordOf(23, "early"));
    EXPECT_EQ(received, "early");
}

TEST_F(ClientHandshakeTest, AnswersAClientHelloThoughItIsTheClient) {
    UseTlsIdentity("rsa1024");
    Start();
    EXPECT_EQ(Outline(Answer(HandshakeRecord(MessageOf(1, ClientHelloFields().Body())))), "22:2 22:11 22:14");
}

// ------------------------------------------------------------------------------------------------ the request

TEST_F(ClientHandshakeTest, AnswersARequestOfItsAuthorityWithItsChainAndItsSignature) {
    UseTlsIdentity("client");
    const ByteString before = peer.transcript;
    const std::vector<SeenRecord> records =
        AnswerToRequest(CertificateRequestBody(Octets({1}), {AuthorityNamed("Velmora Client Authority")}));
    ASSERT_EQ(MessageTypes(records), (Types{11, 16, 15, 20}));
    EXPECT_EQ(MessageIn(records[0]).body, CertificateBody({LoadTlsIdentity("client").certificate}));

    // The signature is over all messages before it (RFC 2246, 7.4.8), in a block of type 1 (RFC 2313, 8.1).
    const ByteString verify = MessageIn(records[2]).body;
    ASSERT_EQ(verify.size(), 2U + 128U);
    EXPECT_EQ(toHex(verify.substr(0, 2)), "0080");
    const ByteString signedMessages =
        peer.transcript.substr(0, peer.transcript.size() - (4 + verify.size()) - (4 + 12));
    const CertificateChain own({LoadTlsIdentity("client").certificate}, kSkipVerification);
    const ByteString expected =
        Octets({1}) + ByteString(89, '\xFF') + Octets({0}) + md5Digest(signedMessages) + sha1Digest(signedMessages);
    EXPECT_EQ(toHex(rsaVerifyRaw(own.exponent, own.modulus, verify.substr(2))), toHex(expected));
}

TEST_F(ClientHandshakeTest, CompletesAHandshakeWithAnAnsweredRequest) {
    UseTlsIdentity("client");
    AnswerToRequest(CertificateRequestBody(Octets({1}), {AuthorityNamed("Velmora Client Authority")}));
    const ByteString change = peer.SendChangeCipherSpec();
    EXPECT_EQ(Answer(change + peer.SendFinished()), "");
    EXPECT_FALSE(client.Failed());
    ExpectDataBothWays();
}

TEST_F(ClientHandshakeTest, KnowsItsAuthorityAmongOthersInAnyCaseAndUnderAnyOfTheTypes) {
    UseTlsIdentity("client");
    const std::vector<SeenRecord> records = AnswerToRequest(CertificateRequestBody(
        Octets({2, 64, 1}), {AuthorityNamed("Another"), AuthorityNamed("VELMORA client AUTHORITY"), ""}));
    EXPECT_EQ(MessageTypes(records), (Types{11, 16, 15, 20}));
    EXPECT_EQ(MessageIn(records[0]).body, CertificateBody({LoadTlsIdentity("client").certificate}));
}

TEST_F(ClientHandshakeTest, AnswersARequestOfOtherAuthoritiesWithAnEmptyListAndNoSignature) {
    UseTlsIdentity("client");
    std::vector<SeenRecord> records;
    const std::vector<ByteString> log = Logged(9, [&] {
        records =
            AnswerToRequest(CertificateRequestBody(Octets({1}), {AuthorityNamed("Another One"), AuthorityNamed("B")}));
    });
    EXPECT_EQ(MessageTypes(records), (Types{11, 16, 20}));
    EXPECT_EQ(MessageIn(records[0]).body, Octets({0, 0, 0}));
    const auto first =
        std::find(log.begin(), log.end(), "9 CSTA: Certificate request from another one could not be answered");
    ASSERT_LT(first + 2, log.end());
    EXPECT_EQ(*(first + 1), "9 CSTA: Certificate request from b could not be answered");
    EXPECT_EQ(*(first + 2), "9 CSTA: SendCertificate(000000)");
}

TEST_F(ClientHandshakeTest, NamesAnAuthorityThatItCannotAnswerOnceForEachRsaSignType) {
    UseTlsIdentity("client");
    const std::vector<ByteString> log = Logged(9, [&] {
        AnswerToRequest(CertificateRequestBody(Octets({1, 3, 1}), {AuthorityNamed("A")}));
    });
    EXPECT_EQ(std::count(log.begin(), log.end(), "9 CSTA: Certificate request from a could not be answered"), 2);
}

TEST_F(ClientHandshakeTest, AnswersARequestForOtherTypesOfCertificateWithAnEmptyList) {
    UseTlsIdentity("client");
    const std::vector<SeenRecord> records =
        AnswerToRequest(CertificateRequestBody(Octets({2, 3}), {AuthorityNamed("Velmora Client Authority")}));
    EXPECT_EQ(MessageTypes(records), (Types{11, 16, 20}));
}

TEST_F(ClientHandshakeTest, AnswersARequestWithoutAuthoritiesWithAnEmptyList) {
    UseTlsIdentity("client");
    EXPECT_EQ(MessageTypes(AnswerToRequest(CertificateRequestBody(Octets({1}), {}))), (Types{11, 16, 20}));
}

TEST_F(ClientHandshakeTest, SignsNothingWithoutACertificateOfItsOwn) {
    EXPECT_EQ(MessageTypes(AnswerToRequest(CertificateRequestBody(Octets({1}), {AuthorityNamed("")}))),
              (Types{11, 16, 20}));
}

TEST_F(ClientHandshakeTest, AnEmptyRequestIsNone) {
    UseTlsIdentity("client");
    EXPECT_EQ(MessageTypes(AnswerToRequest("")), (Types{16, 20}));
}

// Under a suite that nobody knows, so that all of it can be read.
TEST_F(ClientHandshakeTest, ForgetsARequestOnceItIsAnswered) {
    UseTlsIdentity("client");
    Start();
    const ByteString start = HelloAndCertificate({.suite = kUnknownSuite});
    const ByteString request = CertificateRequestBody(Octets({1}), {AuthorityNamed("Velmora Client Authority")});
    const ByteString asked = start + peer.Send(13, request);
    EXPECT_EQ(Outline(Answer(asked + peer.Send(14, ""))), "22:11 22:15 20 22:20");
    EXPECT_EQ(Outline(Answer(peer.Send(14, ""))), "20 22:20");
}

TEST_F(ClientHandshakeTest, UsesTheLastOfSeveralRequests) {
    UseTlsIdentity("client");
    Start();
    const ByteString start = HelloAndCertificate();
    const ByteString first =
        start + peer.Send(13, CertificateRequestBody(Octets({1}), {AuthorityNamed("Velmora Client Authority")}));
    const ByteString second = first + peer.Send(13, CertificateRequestBody(Octets({1}), {AuthorityNamed("B")}));
    EXPECT_EQ(MessageTypes(TakeFlight(Answer(second + peer.Send(14, "")))), (Types{11, 16, 20}));
}

// ------------------------------------------------------------------------------------------------ resumption

class ClientResumptionTest : public ClientHandshakeTest {
protected:
    // A complete session; then a new connection on the same object, to a server that resumes it.
    ClientResumptionTest() {
        Complete({.sessionId = sessionId});
        const ByteString master = peer.master;
        peer = ScriptedPeer(false);
        peer.SetMaster(master);
        client.Reset();
        client.verifyCertificates = false;
        client.SetLogPrefix("CSTA: ");
        fixedRandomSequence = "another random";
        Start();
    }

    ByteString ResumedHello() { return peer.SendServerHello({.random = ByteString(32, 'S'), .sessionId = sessionId}); }

    const ByteString sessionId = ByteString(32, 'i');
};

TEST_F(ClientResumptionTest, ChangesItsKeysWithTheServerAndFinishesBehindIt) {
    EXPECT_EQ(Answer(ResumedHello()), "");
    const ByteString change = Answer(peer.SendChangeCipherSpec());
    EXPECT_EQ(change, RecordOf(20, Octets({1})));
    peer.Receive(change);
    const ByteString expected = peer.SendFinished();
    const ByteString finished = Answer(expected);
    const ByteString verifyData = peer.VerifyData(true);
    const std::vector<SeenRecord> records = peer.Receive(finished);
    EXPECT_EQ(records, (std::vector<SeenRecord>{{22, 0x0301, MessageOf(20, verifyData)}}));
    EXPECT_TRUE(client.HandshakeComplete());
    EXPECT_FALSE(client.Failed());
    ExpectDataBothWays();
}

TEST_F(ClientResumptionTest, RunsTheFullHandshakeWhenTheServerNamesAnotherSession) {
    TakeFlight(Answer(Flight({.sessionId = ByteString(32, 'j')})));
    const ByteString change = peer.SendChangeCipherSpec();
    EXPECT_EQ(Answer(change + peer.SendFinished()), "");
    EXPECT_FALSE(client.Failed());
    ExpectDataBothWays();
}

TEST_F(ClientResumptionTest, SendsItsFinishedEvenBehindTheAlertAboutAWrongOne) {
    const ByteString hello = ResumedHello();
    peer.Receive(Answer(hello + peer.SendChangeCipherSpec()));
    const std::vector<SeenRecord> records = peer.Receive(Answer(peer.Send(20, "wrong")));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].fragment, Octets({2, 21}));
    EXPECT_EQ(MessageIn(records[1]).type, 20U);
}

TEST_F(ClientHandshakeTest, StartingAgainWithoutResetGoesOnUnderTheOldKeys) {
    Complete();
    client.StartClientHandshake();
    const std::vector<SeenRecord> records = peer.Receive(client.Send({}));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(MessageIn(records[0]).type, 1U);
    EXPECT_TRUE(client.HandshakeComplete());
}

TEST_F(ClientHandshakeTest, StartingSetsTheVersionAnew) {
    UseTlsIdentity("rsa1024");
    Answer(HandshakeRecord(MessageOf(1, ClientHelloFields{.version = 0x0300}.Body())));
    ASSERT_EQ(client.ProtocolVersion(), 0x0300);
    client.StartClientHandshake();
    EXPECT_EQ(client.ProtocolVersion(), 0x0301);
    EXPECT_EQ(RecordsIn(client.Send({}))[0].version, 0x0301U);
}

TEST_F(ClientHandshakeTest, ResetForgetsAllOfAFailedHandshakeAndTheNextOneSucceeds) {
    Start();
    client.Send("held back");
    Answer(Flight({.version = 0x0300}));
    ASSERT_TRUE(client.Failed());
    client.Feed("half a record");
    client.Reset();
    EXPECT_FALSE(client.Failed());
    EXPECT_FALSE(client.HandshakeComplete());
    EXPECT_EQ(client.ProtocolVersion(), 0);
    EXPECT_TRUE(client.verifyCertificates);
    client.verifyCertificates = false;
    peer = ScriptedPeer(false);
    Complete();
    EXPECT_EQ(client.Send({}), "");
    ExpectDataBothWays();
}

}  // namespace
}  // namespace velmora
