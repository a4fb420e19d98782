// How messages of the handshake come in: joined, split, unknown, or of no consequence.

#include <gtest/gtest.h>

#include "crypto/trust_store.h"
#include "tests/support/fixed_random.h"
#include "tests/support/logged.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/tls_identity.h"
#include "tls/tls_connection.h"

namespace velmora {
namespace {

// A client before a server whose suite nobody knows: all of the handshake stays in the clear, and the proofs show
// whether both ends have the same transcript.
class HandshakeMessagesTest : public testing::Test {
protected:
    HandshakeMessagesTest() { Restart(); }

    void Restart() {
        client = TlsConnection();
        client.verifyCertificates = false;
        client.SetLogPrefix("CSTA: ");
        peer = ScriptedPeer(false);
        client.StartClientHandshake();
        peer.Receive(client.Send({}));
    }

    // A message that both ends take into their transcript.
    ByteString Message(unsigned type, std::string_view body) {
        const ByteString message = MessageOf(type, body);
        peer.transcript += message;
        return message;
    }

    // The server's messages up to ServerHelloDone.
    ByteString Messages() {
        const ByteString hello = Message(2, ServerHelloFields{.suite = 0x1234}.Body());
        const ByteString certificate = Message(11, CertificateBody({pbx.certificate}));
        return hello + certificate + Message(14, "");
    }

    // The client has answered with its Finished; both proofs must be right.
    void ExpectFinishes() {
        const ByteString expected = peer.VerifyData(true);
        const ByteString answer = client.Send({});
        ASSERT_EQ(Outline(answer), "20 22:20");
        ASSERT_EQ(MessagesIn(RecordsIn(answer)[1].fragment)[0].body, expected);
        peer.Receive(answer);
        client.Feed(RecordOf(20, Octets({1})));
        client.Feed(peer.SendFinished());
        ASSERT_TRUE(client.HandshakeComplete());
        ASSERT_FALSE(client.Failed());
        ASSERT_EQ(client.Send({}), "");
    }

    const TlsIdentity pbx = LoadTlsIdentity("rsa1024");
    TlsConnection client;
    ScriptedPeer peer{false};
};

TEST_F(HandshakeMessagesTest, MayAllComeInOneRecord) {
    client.Feed(HandshakeRecord(Messages()));
    ExpectFinishes();
}

TEST_F(HandshakeMessagesTest, MayBeCutBetweenTwoRecordsAnywhere) {
    const size_t length = Messages().size();
    for (size_t cut = 0; cut <= length; ++cut) {
        SCOPED_TRACE(cut);
        Restart();
        const ByteString messages = Messages();
        client.Feed(HandshakeRecord(messages.substr(0, cut)));
        const bool answeredEarly = !client.Send({}).empty();
        ASSERT_FALSE(answeredEarly && cut < length);
        if (answeredEarly) continue;
        client.Feed(HandshakeRecord(messages.substr(cut)));
        ExpectFinishes();
        if (HasFatalFailure()) return;
    }
}

TEST_F(HandshakeMessagesTest, MayComeInRecordsOfOneByte) {
    const ByteString messages = Messages();
    for (const char byte : messages) client.Feed(HandshakeRecord(ByteString(1, byte)));
    ExpectFinishes();
}

TEST_F(HandshakeMessagesTest, MayComeOneByteAChunk) {
    for (const char byte : HandshakeRecord(Messages())) client.Feed(ByteString(1, byte));
    ExpectFinishes();
}

TEST_F(HandshakeMessagesTest, MayHaveOtherRecordsBetweenTheirPieces) {
    const ByteString messages = Messages();
    client.Feed(HandshakeRecord(messages.substr(0, 50)));
    EXPECT_EQ(client.Feed(RecordOf(23, "between")), "between");
    client.Feed(RecordOf(21, Octets({1, 90})) + RecordOf(22, "") + RecordOf(99, "unknown"));
    client.Feed(HandshakeRecord(messages.substr(50)));
    ExpectFinishes();
}

TEST_F(HandshakeMessagesTest, AreProcessedOnceEach) {
    const ByteString hello = Message(2, ServerHelloFields{.suite = 0x1234}.Body());
    const std::vector<ByteString> log = Logged(9, [&] {
        client.Feed(HandshakeRecord(hello.substr(0, 20)));
        client.Feed(HandshakeRecord(hello.substr(20)));
        client.Feed(HandshakeRecord(""));
    });
    EXPECT_EQ(log.size(), 1U);
}

TEST_F(HandshakeMessagesTest, HelloRequestIsLoggedIgnoredAndNoPartOfTheTranscript) {
    const std::vector<ByteString> log =
        Logged(9, [&] { client.Feed(HandshakeRecord(MessageOf(0, "") + MessageOf(0, "\x01\xAB"))); });
    EXPECT_EQ(log, (std::vector<ByteString>{"9 CSTA: ProcessHelloRequest()", "9 CSTA: ProcessHelloRequest(01ab)"}));
    EXPECT_EQ(client.Send({}), "");
    client.Feed(HandshakeRecord(Messages()));
    ExpectFinishes();
}

TEST_F(HandshakeMessagesTest, ServerKeyExchangeIsLoggedAndIgnoredButPartOfTheTranscript) {
    const std::vector<ByteString> log = Logged(9, [&] { client.Feed(HandshakeRecord(Message(12, "\x0F\xF0"))); });
    EXPECT_EQ(log, std::vector<ByteString>{"9 CSTA: ProcessServerKeyExchange(0ff0)"});
    client.Feed(HandshakeRecord(Messages()));
    ExpectFinishes();
}

TEST_F(HandshakeMessagesTest, CertificateVerifyIsLoggedAndIgnoredButPartOfTheTranscript) {
    const std::vector<ByteString> log = Logged(9, [&] { client.Feed(HandshakeRecord(Message(15, "signed"))); });
    EXPECT_EQ(log, std::vector<ByteString>{"9 CSTA: ProcessCertificateVerify(7369676e6564)"});
    client.Feed(HandshakeRecord(Messages()));
    ExpectFinishes();
}

TEST_F(HandshakeMessagesTest, AnUnknownTypeIsIgnoredButPartOfTheTranscript) {
    for (unsigned type = 0; type < 256; ++type) {
        if (type <= 2 || (type >= 11 && type <= 16) || type == 20) continue;
        SCOPED_TRACE(type);
        Restart();
        const std::vector<ByteString> log = Logged(9, [&] { client.Feed(HandshakeRecord(Message(type, "what?"))); });
        ASSERT_EQ(log, std::vector<ByteString>{"6 CSTA: Ignoring handshake type " + std::to_string(type)});
        ASSERT_EQ(client.Send({}), "");
        client.Feed(HandshakeRecord(Messages()));
        ExpectFinishes();
    }
}

TEST_F(HandshakeMessagesTest, UnknownTypesAreSaidAtLevel6AndNotAtLevel5) {
    EXPECT_EQ(Logged(5, [&] { client.Feed(HandshakeRecord(MessageOf(99, ""))); }), std::vector<ByteString>{});
}

TEST_F(HandshakeMessagesTest, ANumberThatIsCutOffCountsAsZero) {
    // A ServerHello of one byte has version 0.
    client.Feed(HandshakeRecord(MessageOf(2, "\x03")));
    EXPECT_EQ(Outline(client.Send({})), "21:2,70");
}

TEST_F(HandshakeMessagesTest, AServerHelloThatEndsBehindItsVersionHasNoSuite) {
    client.Feed(HandshakeRecord(MessageOf(2, Octets({3, 1}))));
    EXPECT_EQ(client.Send({}), "");
    EXPECT_EQ(client.Suite().number, 0);
    EXPECT_FALSE(client.Failed());
}

TEST_F(HandshakeMessagesTest, LooksAtNoMessageBehindAnAlertInTheSameRecord) {
    const ByteString emptyList = MessageOf(11, CertificateBody({}));
    const std::vector<ByteString> log =
        Logged(9, [&] { client.Feed(HandshakeRecord(emptyList + emptyList + MessageOf(0, "") + MessageOf(14, ""))); });
    EXPECT_EQ(Outline(client.Send({})), "21:2,48");
    EXPECT_EQ(log, (std::vector<ByteString>{"9 CSTA: ProcessCertificate(000000)", "9 CSTA: Received 0 certificates",
                                            "9 CSTA: SendAlert(0230)"}));
}

}  // namespace
}  // namespace velmora
