// Handshakes that are damaged on their way: any message cut short or changed in any byte, and any byte of the stream
// changed. Whatever comes of it, no end takes a damaged handshake for a good one, and none hands out what the other has
// not sent.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "crypto/trust_store.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/support/hand_clock.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"
#include "tests/support/tls_records.h"
#include "tls/session_cache.h"

namespace velmora {
namespace {

// A change to bytes; false when there is no such place in them.
using Damage = std::function<bool(ByteString& bytes)>;

constexpr unsigned kFlips[] = {0x01, 0x80, 0xFF};

Damage FlipAt(size_t position, unsigned flip) {
    return [=](ByteString& bytes) {
        if (position >= bytes.size()) return false;
        bytes[position] = static_cast<char>(static_cast<unsigned char>(bytes[position]) ^ flip);
        return true;
    };
}

Damage CutAt(size_t length) {
    return [=](ByteString& bytes) {
        if (length >= bytes.size()) return false;
        bytes.resize(length);
        return true;
    };
}

// The type of the message with its body, as one byte string to be damaged; and both in a record with right lengths.
ByteString TypeAndBody(const SeenMessage& message) {
    return BigEndian(message.type, 1) + message.body;
}
ByteString Framed(const ByteString& typeAndBody) {
    if (typeAndBody.empty()) return {};
    return HandshakeRecord(MessageOf(static_cast<unsigned char>(typeAndBody[0]), typeAndBody.substr(1)));
}

// Two ends, and between them somebody who can change what passes.
class DamageTest : public testing::Test {
protected:
    DamageTest() {
        handClockMs = 3600000;
        sessionCache.Clear();
        UseTlsIdentity("rsa1024");
    }
    ~DamageTest() override {
        handClockMs = 3600000;
        sessionCache.Clear();
        setOwnCertificate({}, {});
    }
    DamageTest(const DamageTest&) = delete;
    DamageTest& operator=(const DamageTest&) = delete;

    // Two ends that will run a full handshake; and two that will resume a session.
    static TlsPair FullPair() { return {}; }
    TlsPair ResumingPair() {
        TlsPair pair;
        pair.server.resumeSessions = true;
        pair.Handshake();
        EXPECT_TRUE(pair.client.HandshakeComplete());
        pair.client.Reset();
        pair.client.verifyCertificates = false;
        pair.server = TlsConnection();
        pair.server.resumeSessions = true;
        handClockMs += 2000000;
        return pair;
    }

    // Carries bytes to and fro, through a filter that sees what each end sends.
    using Filter = std::function<ByteString(bool fromClient, const ByteString& bytes)>;
    static void Run(TlsPair& pair, const Filter& filter) {
        pair.client.StartClientHandshake();
        for (int round = 0; round < 12; ++round) {
            const ByteString toServer =
                filter(true, pair.client.Send(pair.client.HandshakeComplete() ? "request" : ""));
            pair.serverReceived += pair.server.Feed(toServer);
            const ByteString toClient =
                filter(false, pair.server.Send(pair.server.HandshakeComplete() ? "answer" : ""));
            pair.clientReceived += pair.client.Feed(toClient);
            if (toServer.empty() && toClient.empty()) break;
        }
    }

    static bool IsGood(const TlsConnection& end) { return end.HandshakeComplete() && !end.Failed(); }

    // Nothing but repetitions of the text, the last one perhaps cut off.
    static bool Repeats(const ByteString& bytes, const ByteString& text) {
        for (size_t position = 0; position < bytes.size(); ++position) {
            if (bytes[position] != text[position % text.size()]) return false;
        }
        return true;
    }

    static bool HaveEqualSecrets(TlsPair& pair) {
        return pair.server.Feed(pair.client.Send("one way")).ends_with("one way") &&
               pair.client.Feed(pair.server.Send("and back")).ends_with("and back");
    }

    // Damages the handshake messages in the clear, one in each run, and expects that the end it was sent to does not
    // take the handshake for a good one: its transcript is another than the sender's. How many runs there were.
    size_t DamageMessages(const TlsPair& pair, const std::function<Damage(size_t)>& damageAt) {
        const SessionCache sessions = sessionCache;
        size_t runs = 0;
        for (size_t target = 0;; ++target) {  // the how manieth message
            bool reached = false;
            for (size_t position = 0;; ++position) {
                sessionCache = sessions;
                TlsPair victims = pair;
                size_t seen = 0;
                bool damaged = false;
                bool damagedByClient = false;
                bool clear[2] = {true, true};
                Run(victims, [&](bool fromClient, const ByteString& bytes) {
                    ByteString passed;
                    for (const SeenRecord& record : RecordsIn(bytes)) {
                        ByteString out = RecordOf(record.type, record.fragment, record.version);
                        if (record.type == 20) clear[fromClient] = false;
                        if (record.type == 22 && clear[fromClient] && seen++ == target) {
                            reached = true;
                            ByteString content = TypeAndBody(MessagesIn(record.fragment)[0]);
                            damaged = damageAt(position)(content);
                            damagedByClient = fromClient;
                            if (damaged) out = Framed(content);
                        }
                        passed += out;
                    }
                    return passed;
                });
                if (!damaged) break;
                ++runs;
                const TlsConnection& victim = damagedByClient ? victims.server : victims.client;
                EXPECT_FALSE(IsGood(victim)) << "byte " << position << " of message " << target;
                EXPECT_EQ(victims.serverReceived, "");
                EXPECT_EQ(victims.clientReceived, "");
                if (HasFailure()) return runs;
            }
            if (!reached) return runs;
        }
    }

    // Damages the bytes from one end to the other, at one place in each run, and expects that nothing is handed out
    // that was not sent: before a ChangeCipherSpec, what stands in a record of application data, and repetitions of the
    // text behind it. How many runs there were.
    size_t DamageStream(const TlsPair& pair, bool fromClient, const std::function<Damage(size_t)>& damageAt) {
        const SessionCache sessions = sessionCache;
        for (size_t position = 0;; ++position) {
            sessionCache = sessions;
            TlsPair victims = pair;
            size_t sentBytes = 0;
            bool damaged = false;
            bool cut = false;
            ByteString passed;
            Run(victims, [&](bool byClient, const ByteString& bytes) {
                if (byClient != fromClient) return bytes;
                if (cut) return ByteString();
                ByteString changed = bytes;
                if (!damaged && position < sentBytes + bytes.size()) damaged = damageAt(position - sentBytes)(changed);
                cut = changed.size() < bytes.size();
                sentBytes += bytes.size();
                passed += changed;
                return changed;
            });
            if (!damaged) return position;
            const ByteString clear = DataBeforeChange(passed);
            const ByteString& received = fromClient ? victims.serverReceived : victims.clientReceived;
            const ByteString& other = fromClient ? victims.clientReceived : victims.serverReceived;
            EXPECT_TRUE(received.starts_with(clear)) << position;
            EXPECT_TRUE(Repeats(received.substr(clear.size()), fromClient ? "request" : "answer")) << position;
            EXPECT_TRUE(Repeats(other, fromClient ? "answer" : "request")) << position;
            if (HasFailure()) return position;
        }
    }

    // What stands in records of application data before the first ChangeCipherSpec.
    static ByteString DataBeforeChange(const ByteString& stream) {
        ByteString data;
        for (size_t position = 0; position + 5 <= stream.size() && stream[position] != 20;) {
            const size_t length = static_cast<unsigned char>(stream[position + 3]) * 256U +
                                  static_cast<unsigned char>(stream[position + 4]);
            if (position + 5 + length > stream.size()) break;
            if (stream[position] == 23) data += stream.substr(position + 5, length);
            position += 5 + length;
        }
        return data;
    }
};

TEST_F(DamageTest, NoneLeavesBothEndsAgreed) {
    for (TlsPair pair : {FullPair(), ResumingPair()}) {
        Run(pair, [](bool, const ByteString& bytes) { return bytes; });
        EXPECT_TRUE(IsGood(pair.client) && IsGood(pair.server));
        EXPECT_TRUE(!pair.serverReceived.empty() && Repeats(pair.serverReceived, "request"));
        EXPECT_TRUE(!pair.clientReceived.empty() && Repeats(pair.clientReceived, "answer"));
        EXPECT_TRUE(HaveEqualSecrets(pair));
    }
}

TEST_F(DamageTest, NoMessageOfAFullHandshakeMayBeChangedInAnyByte) {
    for (const unsigned flip : kFlips) {
        EXPECT_GT(DamageMessages(FullPair(), [=](size_t position) { return FlipAt(position, flip); }), 700U);
    }
}

TEST_F(DamageTest, NoMessageOfAFullHandshakeMayBeCutShort) {
    EXPECT_GT(DamageMessages(FullPair(), [](size_t position) { return CutAt(position); }), 700U);
}

TEST_F(DamageTest, NoMessageOfAResumedHandshakeMayBeChangedOrCutShort) {
    const TlsPair pair = ResumingPair();
    for (const unsigned flip : kFlips) {
        EXPECT_GT(DamageMessages(pair, [=](size_t position) { return FlipAt(position, flip); }), 140U);
    }
    EXPECT_GT(DamageMessages(pair, [](size_t position) { return CutAt(position); }), 140U);
}

TEST_F(DamageTest, OfAnyByteInEitherStreamMakesNobodyHandOutWhatWasNotSent) {
    for (const bool fromClient : {true, false}) {
        for (const unsigned flip : {0x01U, 0xFFU}) {
            const auto damageAt = [=](size_t position) { return FlipAt(position, flip); };
            EXPECT_GT(DamageStream(FullPair(), fromClient, damageAt), 300U);
        }
    }
}

TEST_F(DamageTest, OfAnyByteInEitherStreamOfAResumedHandshakeMakesNobodyHandOutWhatWasNotSent) {
    const TlsPair pair = ResumingPair();
    for (const bool fromClient : {true, false}) {
        for (const unsigned flip : {0x01U, 0xFFU}) {
            const auto damageAt = [=](size_t position) { return FlipAt(position, flip); };
            EXPECT_GT(DamageStream(pair, fromClient, damageAt), 200U);
        }
    }
}

TEST_F(DamageTest, EitherStreamMayEndAnywhere) {
    for (const bool fromClient : {true, false}) {
        EXPECT_GT(DamageStream(FullPair(), fromClient, [](size_t position) { return CutAt(position); }), 300U);
    }
}

// A server that is not damaged on its way but lies: its transcript has what it sends.
class LyingPeerTest : public DamageTest {
protected:
    // Sends these messages to a new client, one of them damaged, and then whatever ends a handshake. False when there
    // is no such place.
    bool Lie(const std::vector<SeenMessage>& messages, size_t target, const Damage& damage) {
        ByteString content = TypeAndBody(messages[target]);
        if (!damage(content)) return false;
        TlsConnection client;
        client.verifyCertificates = false;
        client.StartClientHandshake();
        client.Send({});
        ByteString handedOut;
        for (size_t index = 0; index < messages.size(); ++index) {
            handedOut += client.Feed(Framed(index == target ? content : TypeAndBody(messages[index])));
        }
        const std::vector<int> flight = RecordTypes(client.Send({}));
        EXPECT_EQ(client.Failed(), std::ranges::count(flight, 21) > 0);  // alert
        handedOut += client.Feed(RecordOf(20, Octets({1})) + RecordOf(22, ByteString(40, 'f')));
        handedOut += client.Feed(RecordOf(23, ByteString(50, 'd')));
        EXPECT_EQ(client.Send("data").find("data"), ByteString::npos);
        EXPECT_TRUE(handedOut.empty() || !client.Suite().IsKnown());
        return true;
    }
};

TEST_F(LyingPeerTest, CertificateRequestsAndAllAroundThemMayBeDamagedAnywhere) {
    UseTlsIdentity("client");
    const ByteString authority = derElement(0x30, nameContent("Velmora Client Authority"));
    const std::vector<SeenMessage> messages = {
        {2, ServerHelloFields{.sessionId = "session"}.Body()},
        {11, CertificateBody({LoadTlsIdentity("rsa1024").certificate})},
        {13, CertificateRequestBody(Octets({1, 2}), {derElement(0x30, nameContent("Another")), authority})},
        {14, "done"},
    };
    size_t runs = 0;
    for (size_t target = 0; target < messages.size(); ++target) {
        for (size_t position = 0; Lie(messages, target, CutAt(position)); ++position) ++runs;
        for (const unsigned flip : {0x01U, 0x04U, 0x80U, 0xFFU}) {
            for (size_t position = 0; Lie(messages, target, FlipAt(position, flip)); ++position) ++runs;
            ASSERT_FALSE(HasFailure()) << "message " << target;
        }
    }
    EXPECT_GT(runs, 3000U);
}

// A client that lies to a server, up to its key exchange; and a server to a client, about its Finished.
TEST_F(LyingPeerTest, ClientHelloAndKeyExchangeMayBeDamagedAnywhere) {
    const TlsIdentity pbx = LoadTlsIdentity("rsa1024");
    const CertificateChain certificate({pbx.certificate}, kSkipVerification);
    const ByteString hello = ClientHelloFields{.sessionId = "session", .suites = Octets({0, 5, 0, 4})}.Body();
    ScriptedPeer client(true);
    const ByteString exchange = client.SendClientKeyExchange(certificate.modulus, certificate.exponent).substr(9);
    const std::vector<SeenMessage> messages = {{1, hello}, {16, exchange}};
    size_t runs = 0;
    const auto lie = [&](size_t target, const Damage& damage) {
        ByteString content = TypeAndBody(messages[target]);
        if (!damage(content)) return false;
        TlsConnection server;
        server.resumeSessions = true;
        for (size_t index = 0; index < messages.size(); ++index) {
            server.Feed(Framed(index == target ? content : TypeAndBody(messages[index])));
        }
        EXPECT_EQ(server.Feed(RecordOf(20, Octets({1})) + RecordOf(23, ByteString(40, 'd'))),
                  server.Suite().IsKnown() || server.Failed() ? ByteString() : ByteString(40, 'd'));
        EXPECT_FALSE(server.HandshakeComplete() && !server.Failed());
        ++runs;
        return true;
    };
    for (size_t target = 0; target < messages.size(); ++target) {
        for (size_t position = 0; lie(target, CutAt(position)); ++position) {
        }
        for (const unsigned flip : kFlips) {
            for (size_t position = 0; lie(target, FlipAt(position, flip)); ++position) {
            }
        }
    }
    EXPECT_GT(runs, 600U);
}

TEST_F(LyingPeerTest, NoFinishedIsGoodThatIsCutShortOrChanged) {
    // A client that has sent its flight and taken the server's change of keys; the server can go on from here.
    TlsConnection client;
    client.verifyCertificates = false;
    ScriptedPeer server(false);
    client.StartClientHandshake();
    server.Receive(client.Send({}));
    client.Feed(server.SendServerHello({.suite = 0x1234}));
    client.Feed(server.Send(14, ""));
    server.Receive(client.Send({}));
    client.Feed(server.SendChangeCipherSpec());
    const ByteString verifyData = server.VerifyData(false);
    const auto isRefused = [&](ByteString finished, const Damage& damage) {
        if (!damage(finished)) return false;
        TlsConnection victim = client;
        victim.Feed(HandshakeRecord(MessageOf(20, finished)));
        EXPECT_TRUE(victim.Failed());
        return true;
    };
    TlsConnection unharmed = client;
    unharmed.Feed(HandshakeRecord(MessageOf(20, verifyData)));
    EXPECT_TRUE(IsGood(unharmed));
    for (size_t position = 0; isRefused(verifyData, CutAt(position)); ++position) {
    }
    for (unsigned flip = 1; flip < 256; ++flip) {
        for (size_t position = 0; isRefused(verifyData, FlipAt(position, flip)); ++position) {
        }
    }
}

}  // namespace
}  // namespace velmora
