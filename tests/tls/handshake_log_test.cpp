// What the trace log has of a handshake: every text, its level and its place. The values are those on the wire and
// those that a peer of its own has computed from it.

#include <gtest/gtest.h>

#include <algorithm>

#include "crypto/certificate_chain.h"
#include "crypto/prf.h"
#include "crypto/rsa.h"
#include "crypto/trust_store.h"
#include "tests/support/fixed_random.h"
#include "tests/support/hand_clock.h"
#include "tests/support/hex.h"
#include "tests/support/logged.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/tls_identity.h"
#include "tls/session_cache.h"
#include "tls/tls_connection.h"

namespace velmora {
namespace {

using Texts = std::vector<ByteString>;

// The log records of one end, as they are expected.
class Expected {
public:
    explicit Expected(const ByteString& logHead) : head(logHead) {}

    void SetHead(const ByteString& logHead) { head = logHead; }
    Expected& Step(const char* step, const ByteString& value) {
        texts.push_back("9 " + head + step + "(" + toHex(value) + ")");
        return *this;
    }
    Expected& Text(const ByteString& text) {
        texts.push_back(text);
        return *this;
    }

    // What PerformChangeCipherSpec logs with the suite 0x0005.
    void Keys(const ScriptedPeer& peer) {
        const ByteString keyBlock =
            tlsPrf(peer.master, "key expansion", peer.serverRandom + peer.clientRandom, 2 * (20 + 16));
        Step("PerformChangeCipherSpec", Octets({0, 5}));
        Step("Key Block", keyBlock);
        Step("Client Write MAC Secret", keyBlock.substr(0, 20));
        Step("Server Write MAC Secret", keyBlock.substr(20, 20));
        Step("Client Write Key", keyBlock.substr(40, 16));
        Step("Server Write Key", keyBlock.substr(56, 16));
    }

    Texts texts;

private:
    ByteString head;
};

class HandshakeLogTest : public testing::Test {
protected:
    HandshakeLogTest() {
        fixedRandomSequence = "ZYXWVUTSRQPONMLK";
        fixedRandomTaken = 0;
        sessionCache.Clear();
        handClockMs = 3600000;
        setOwnCertificate({}, {});
        end.verifyCertificates = false;
        end.SetLogPrefix("CSTA: ");
    }
    ~HandshakeLogTest() override {
        sessionCache.Clear();
        setOwnCertificate({}, {});
        handClockMs = 3600000;
    }
    HandshakeLogTest(const HandshakeLogTest&) = delete;
    HandshakeLogTest& operator=(const HandshakeLogTest&) = delete;

    // What one end logs at loglevel when it is given these bytes; its answer is in answer.
    Texts LogOf(std::string_view stream, int loglevel = 9) {
        return Logged(loglevel, [&] {
            end.Feed(stream);
            answer = end.Send({});
        });
    }
    ByteString Decrypted(const ByteString& encrypted) const {
        const CertificateChain own({pbx.certificate}, pbx.privateKey);
        RsaKey key;
        setPrivateKey(key, own.keyPrivateExponent, own.keyPublicExponent, own.keyModulus, own.keyPrime1, own.keyPrime2);
        return rsaPrivate(key, encrypted);
    }

    const TlsIdentity pbx = LoadTlsIdentity("rsa1024");
    const CertificateChain certificate{{pbx.certificate}, kSkipVerification};
    TlsConnection end;
    ByteString answer;
};

TEST_F(HandshakeLogTest, OfAClientsFullHandshake) {
    ScriptedPeer server(false);
    const Texts started = Logged(9, [&] {
        end.StartClientHandshake();
        answer = end.Send({});
    });
    Expected expected("CSTA: ");
    expected.Step("SendClientHello", MessagesIn(RecordsIn(answer)[0].fragment)[0].body);
    EXPECT_EQ(started, expected.texts);
    server.Receive(answer);

    const ServerHelloFields hello = {.sessionId = Octets({0xDE, 0xAD, 0xBE, 0xEF, 0x01, 0x02})};
    expected = Expected("CSTA: ");
    expected.Step("ProcessServerHello", hello.Body());
    EXPECT_EQ(LogOf(server.SendServerHello(hello)), expected.texts);

    expected = Expected("CSTA: [deadbeef]");
    expected.Step("ProcessCertificate", CertificateBody({pbx.certificate}))
        .Text("9 CSTA: [deadbeef]Received 1 certificates")
        .Text("9 domain1=" + toHex("pbx.velmora.example"))
        .Text("9 CSTA: [deadbeef]Don't verify certificates")
        .Step("Rsa N", certificate.modulus)
        .Step("Rsa E", Octets({1, 0, 1}));
    EXPECT_EQ(LogOf(server.Send(11, CertificateBody({pbx.certificate}))), expected.texts);

    const Texts flight = LogOf(server.Send(14, ""));
    const ByteString keyExchange = MessagesIn(RecordsIn(answer)[0].fragment)[0].body;
    const ByteString block = Decrypted(keyExchange.substr(2));
    server.SetPreMaster(block.substr(128 - 48));
    server.transcript += MessageOf(16, keyExchange);
    const ByteString verifyData = server.VerifyData(true);
    expected = Expected("CSTA: [deadbeef]");
    expected.Step("ProcessServerHelloDone", "")
        .Step("RSA N", certificate.modulus)
        .Step("RSA E", Octets({1, 0, 1}))
        .Step("Pre Master Secret", block.substr(128 - 48))
        .Step("Block Padded", block)
        .Step("Encrypted Pre Master", keyExchange.substr(2))
        .Step("Client Random", server.clientRandom)
        .Step("Server Random", server.serverRandom)
        .Step("Master Secret", server.master)
        .Step("SendClientKeyExchange", keyExchange)
        .Step("SendChangeCipherSpec", Octets({1}));
    expected.Keys(server);
    expected.Step("SendFinished", verifyData);
    EXPECT_EQ(flight, expected.texts);

    server.transcript += MessageOf(20, verifyData);
    expected = Expected("CSTA: [deadbeef]");
    expected.Step("ProcessChangeCipherSpec", Octets({1})).Step("ProcessFinished", server.VerifyData(false));
    const ByteString change = server.SendChangeCipherSpec();
    EXPECT_EQ(LogOf(change + server.SendFinished()), expected.texts);
    EXPECT_TRUE(end.HandshakeComplete());
    EXPECT_FALSE(end.Failed());
}

TEST_F(HandshakeLogTest, OfAClientThatIsAskedForACertificate) {
    UseTlsIdentity("client");
    ScriptedPeer server(false);
    end.StartClientHandshake();
    server.Receive(end.Send({}));
    const ByteString hello = server.SendServerHello();
    end.Feed(hello + server.Send(11, CertificateBody({pbx.certificate})));
    const ByteString request = CertificateRequestBody(Octets({1}), {fromHex("3024"
                                                                            "3122"
                                                                            "3020"
                                                                            "0603550403"
                                                                            "0c19") +
                                                                    "Velmora Client Authority "});
    EXPECT_EQ(LogOf(server.Send(13, request)), Texts{"9 CSTA: ProcessCertificateRequest(" + toHex(request) + ")"});
    const Texts flight = LogOf(server.Send(14, ""));
    ASSERT_GE(flight.size(), 3U);
    EXPECT_EQ(flight[0], "9 CSTA: ProcessServerHelloDone()");
    EXPECT_EQ(flight[1], "9 CSTA: Certificate request from velmora client authority  could not be answered");
    EXPECT_EQ(flight[2], "9 CSTA: SendCertificate(000000)");
}

TEST_F(HandshakeLogTest, OfAClientThatAnswersWithItsCertificate) {
    UseTlsIdentity("client");
    ScriptedPeer server(false);
    end.StartClientHandshake();
    server.Receive(end.Send({}));
    const ByteString hello = server.SendServerHello();
    end.Feed(hello + server.Send(11, CertificateBody({pbx.certificate})));
    end.Feed(server.Send(13, CertificateRequestBody(Octets({1}), {fromHex("3023"
                                                                          "3121"
                                                                          "301f"
                                                                          "0603550403"
                                                                          "0c18") +
                                                                  "Velmora Client Authority"})));
    const Texts flight = LogOf(server.Send(14, ""));
    const std::vector<SeenRecord> records = RecordsIn(answer);
    ASSERT_EQ(flight.size(), 20U);
    EXPECT_EQ(flight[1],
              "9 CSTA: SendCertificate(" + toHex(CertificateBody({LoadTlsIdentity("client").certificate})) + ")");
    EXPECT_EQ(flight[10].substr(0, 30), "9 CSTA: SendClientKeyExchange(");
    EXPECT_EQ(flight[11], "9 CSTA: SendCertificateVerify(" + toHex(MessagesIn(records[2].fragment)[0].body) + ")");
    EXPECT_EQ(flight[12], "9 CSTA: SendChangeCipherSpec(01)");
    EXPECT_EQ(flight[19].substr(0, 21), "9 CSTA: SendFinished(");
}

TEST_F(HandshakeLogTest, OfAServersFullHandshakeAndOfAResumedOne) {
    UseTlsIdentity("rsa1024");
    end.resumeSessions = true;
    ScriptedPeer client(true);
    Texts log = LogOf(client.SendClientHello());
    client.Receive(answer);
    const ByteString head = "CSTA: [" + toHex(client.sessionId.substr(0, 4)) + "]";
    Expected expected("CSTA: ");
    expected.Step("ProcessClientHello", ClientHelloFields().Body());
    expected.SetHead(head);
    expected.Step("SendServerHello", MessagesIn(RecordsIn(answer)[0].fragment)[0].body)
        .Step("SendCertificate", CertificateBody({pbx.certificate}))
        .Step("SendHelloDone", "");
    EXPECT_EQ(log, expected.texts);

    const ByteString keyExchange = client.SendClientKeyExchange(certificate.modulus, certificate.exponent);
    log = LogOf(keyExchange);
    expected = Expected(head);
    expected.Step("ProcessClientKeyExchange", MessagesIn(RecordsIn(keyExchange)[0].fragment)[0].body)
        .Step("Pre Master Secret", Octets({3, 1}) + ByteString(46, 'p'))
        .Step("Client Random", client.clientRandom)
        .Step("Server Random", client.serverRandom)
        .Step("Master Secret", client.master);
    EXPECT_EQ(log, expected.texts);

    const ByteString change = client.SendChangeCipherSpec();
    const ByteString clientsProof = client.VerifyData(true);
    log = LogOf(change + client.SendFinished());
    expected = Expected(head);
    expected.Step("ProcessChangeCipherSpec", Octets({1})).Step("SendChangeCipherSpec", Octets({1}));
    expected.Keys(client);
    expected.Step("ProcessFinished", clientsProof).Step("SendFinished", client.VerifyData(false));
    EXPECT_EQ(log, expected.texts);

    // Resumed: the whole of the server's part in one step.
    handClockMs += 2000000;
    end = TlsConnection();
    end.SetLogPrefix("CSTA: ");
    end.resumeSessions = true;
    ScriptedPeer again(true);
    again.SetMaster(client.master);
    const ClientHelloFields offer = {.random = ByteString(32, 'C'), .sessionId = client.sessionId};
    log = LogOf(again.SendClientHello(offer));
    const std::vector<SeenRecord> records = again.Receive(answer);
    expected = Expected("CSTA: ");
    expected.Step("ProcessClientHello", offer.Body());
    expected.Text("7 CSTA: Resuming session " + toHex(client.sessionId));
    expected.SetHead(head);
    expected.Step("SendServerHello", MessagesIn(records[0].fragment)[0].body).Step("SendChangeCipherSpec", Octets({1}));
    expected.Keys(again);
    expected.Step("SendFinished", MessagesIn(records[2].fragment)[0].body);
    EXPECT_EQ(log, expected.texts);
}

TEST_F(HandshakeLogTest, OfASessionThatIsNotFound) {
    UseTlsIdentity("rsa1024");
    end.resumeSessions = true;
    const ClientHelloFields offer = {.sessionId = Octets({1, 2, 3, 4, 5})};
    const Texts log = LogOf(HandshakeRecord(MessageOf(1, offer.Body())));
    ASSERT_EQ(log.size(), 5U);
    EXPECT_EQ(log[0], "9 CSTA: ProcessClientHello(" + toHex(offer.Body()) + ")");
    EXPECT_EQ(log[1], "7 CSTA: Session 0102030405 not found");
    // 32 bytes have gone into the server random; the next ones are the new session's.
    EXPECT_EQ(log[2].substr(0, 34), "9 CSTA: [5a595857]SendServerHello(");
}

TEST_F(HandshakeLogTest, ShowsAtMostTheFirstFourBytesOfTheSessionId) {
    for (const ByteString& sessionId : {ByteString("\x01"), ByteString("\x01\x02\x03\x04"), ByteString(32, '\x0F')}) {
        end.StartClientHandshake();
        end.Feed(HandshakeRecord(MessageOf(2, ServerHelloFields{.sessionId = sessionId}.Body())));
        EXPECT_EQ(LogOf(HandshakeRecord(MessageOf(0, ""))),
                  Texts{"9 CSTA: [" + toHex(sessionId.substr(0, 4)) + "]ProcessHelloRequest()"});
    }
}

TEST_F(HandshakeLogTest, HasNothingOfAGoodHandshakeBelowLevel9) {
    ScriptedPeer server(false);
    EXPECT_EQ(Logged(8, [&] { end.StartClientHandshake(); }), Texts{});
    server.Receive(end.Send({}));
    const ByteString hello = server.SendServerHello();
    const ByteString shown = hello + server.Send(11, CertificateBody({pbx.certificate}));
    EXPECT_EQ(LogOf(shown + server.Send(14, "") + RecordOf(20, Octets({1})), 8), Texts{});
}

TEST_F(HandshakeLogTest, OfAlertsHasLevelAndDescription) {
    EXPECT_EQ(LogOf(HandshakeRecord(MessageOf(11, Octets({0, 0, 0}))))[2], "9 CSTA: SendAlert(0230)");
}

TEST_F(HandshakeLogTest, OfAClosureOnlyThePrefixBelowLevel9) {
    EXPECT_EQ(LogOf(RecordOf(21, Octets({1, 0}))),
              (Texts{"8 CSTA: Received closure alert", "9 CSTA: SendAlert(0100)"}));
    EXPECT_EQ(answer, RecordOf(21, Octets({1, 0})));
}

}  // namespace
}  // namespace velmora
