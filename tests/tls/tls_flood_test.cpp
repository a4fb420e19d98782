// What a hostile peer may cost: messages in any order, floods of them, and the longest ones there are.

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <string>

#include "config/settings.h"
#include "crypto/trust_store.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/support/counted_memory.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/seeded_bytes.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"
#include "tls/session_cache.h"

namespace velmora {
namespace {

constexpr size_t kLongestMessageBytes = 0xFFFFFF;
constexpr size_t kMegabyte = 1048576;

// No flood and no message may take longer: far above what they take on any machine that runs these tests under the
// sanitizers, and far below what work that grows with the square of their length would take.
constexpr double kPatienceMs = 20000;

// The processor's time where the system counts it, so that a busy machine makes nothing longer.
double TimeMs(const std::function<void()>& action) {
    const std::clock_t start = std::clock();
    action();
    return 1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

class FloodTest : public testing::Test {
protected:
    FloodTest() {
        sessionCache.Clear();
        UseTlsIdentity("rsa1024");
    }
    ~FloodTest() override {
        sessionCache.Clear();
        setOwnCertificate({}, {});
    }
    FloodTest(const FloodTest&) = delete;
    FloodTest& operator=(const FloodTest&) = delete;

    static TlsConnection StartedClient() {
        TlsConnection client;
        client.verifyCertificates = false;
        client.StartClientHandshake();
        client.Send({});
        return client;
    }

    // A client that has the server's hello and certificate.
    TlsConnection ClientWithCertificate() const {
        TlsConnection client = StartedClient();
        client.Feed(HandshakeRecord(MessageOf(2, ServerHelloFields().Body()) +
                                    MessageOf(11, CertificateBody({pbx.certificate}))));
        return client;
    }

    // Sends the stream count times, as much at a time as a socket may give, and takes what is answered. Time and memory
    // must stay within bounds; the victim must not have ended the connection.
    static void Flood(TlsConnection& victim, const ByteString& stream, size_t count) {
        constexpr size_t kChunkBytes = 65536;
        victim.Feed(stream);  // what is taken once does not count
        victim.Send({});
        const size_t before = UsedBytes();
        const double ms = TimeMs([&] {
            ByteString chunk;
            for (size_t sent = 0; sent < count; ++sent) {
                chunk += stream;
                if (chunk.size() < kChunkBytes && sent + 1 < count) continue;
                victim.Feed(chunk);
                victim.Send({});
                chunk.clear();
            }
        });
        EXPECT_LT(UsedBytes(), before + 200000) << "buffers may keep the room of a chunk";
        EXPECT_LT(ms, kPatienceMs);
        EXPECT_FALSE(victim.Failed());
    }

    // Sends one message, cut into the longest records; the most memory that takes.
    static size_t PeakOfMessage(TlsConnection& victim, unsigned type, const ByteString& body) {
        const ByteString message = MessageOf(type, body);
        double ms = 0;
        const size_t peak = PeakBytes([&] {
            ms = TimeMs([&] {
                for (size_t position = 0; position < message.size(); position += 65535) {
                    victim.Feed(HandshakeRecord(std::string_view(message).substr(position, 65535)));
                }
            });
        });
        EXPECT_LT(ms, kPatienceMs);
        RecordProperty("milliseconds", static_cast<int>(ms));
        RecordProperty("megabytes", static_cast<int>(peak / kMegabyte));
        return peak;
    }

    const TlsIdentity pbx = LoadTlsIdentity("rsa1024");
};

// ------------------------------------------------------------------------------------------------ any order

TEST_F(FloodTest, MessagesInAnyOrderCrashNobody) {
    const ByteString authority = derElement(0x30, nameContent("Velmora Client Authority"));
    const CertificateChain certificate({pbx.certificate}, kSkipVerification);
    ScriptedPeer scripted(true);
    const ByteString exchange = scripted.SendClientKeyExchange(certificate.modulus, certificate.exponent);
    const std::vector<ByteString> records = {
        HandshakeRecord(MessageOf(0, "")),
        HandshakeRecord(MessageOf(1, ClientHelloFields().Body())),
        HandshakeRecord(MessageOf(1, ClientHelloFields{.version = 0x0300, .suites = Octets({0, 0x35})}.Body())),
        HandshakeRecord(MessageOf(1, ClientHelloFields{.sessionId = "a session"}.Body())),
        HandshakeRecord(MessageOf(2, ServerHelloFields().Body())),
        HandshakeRecord(MessageOf(2, ServerHelloFields{.sessionId = "another", .suite = 0x2F}.Body())),
        HandshakeRecord(MessageOf(2, ServerHelloFields{.suite = 0x1234}.Body())),
        HandshakeRecord(MessageOf(11, CertificateBody({pbx.certificate}))),
        HandshakeRecord(MessageOf(12, "key exchange")),
        HandshakeRecord(MessageOf(13, CertificateRequestBody(Octets({1}), {authority}))),
        HandshakeRecord(MessageOf(14, "")),
        HandshakeRecord(MessageOf(15, "verify")),
        exchange,
        HandshakeRecord(MessageOf(20, ByteString(12, 'f'))),
        HandshakeRecord(MessageOf(99, "unknown")),
        HandshakeRecord("\x0B"),
        RecordOf(20, Octets({1})),
        RecordOf(20, ""),
        RecordOf(21, Octets({1, 0})),
        RecordOf(21, Octets({2, 40})),
        RecordOf(21, "!"),
        RecordOf(23, "data"),
        RecordOf(99, "unknown"),
    };
    SeededBytes random(5);
    int failed = 0;
    int complete = 0;
    for (int round = 0; round < 3000; ++round) {
        UseTlsIdentity(round % 2 == 0 ? "client" : "rsa1024");
        TlsConnection victim = round % 3 == 0 ? TlsConnection() : StartedClient();
        victim.verifyCertificates = false;
        victim.resumeSessions = round % 5 == 0;
        for (size_t count = 1 + random.upTo(20); count > 0; --count) {
            victim.Feed(records[random.upTo(records.size() - 1)]);
            victim.Send("pending");
        }
        failed += victim.Failed() ? 1 : 0;
        complete += victim.HandshakeComplete() && !victim.Failed() ? 1 : 0;
    }
    EXPECT_GT(failed, 500);
    EXPECT_LT(failed, 2990);
    EXPECT_EQ(complete, 0);
}

// ------------------------------------------------------------------------------------------------ floods

struct FloodCase {
    const char* name;
    ByteString stream;
};

TEST_F(FloodTest, OfRecordsThatSayNothingLeavesNothingBehind) {
    const FloodCase kCases[] = {
        {"empty handshake records", RecordOf(22, "")},
        {"empty data records", RecordOf(23, "")},
        {"empty alerts", RecordOf(21, "")},
        {"alerts of one byte", RecordOf(21, "\x02")},
        {"records of an unknown type", RecordOf(99, "?")},
        {"warnings", RecordOf(21, Octets({1, 90}))},
        {"fatal alerts", RecordOf(21, Octets({2, 40}))},
        {"closures", RecordOf(21, Octets({1, 0}))},
        {"HelloRequests", HandshakeRecord(MessageOf(0, ""))},
        {"unknown messages", HandshakeRecord(MessageOf(77, ""))},
        {"HelloRequests in halves", HandshakeRecord(Octets({0, 0})) + HandshakeRecord(Octets({0, 0}))},
        {"data", RecordOf(23, "data")},
    };
    for (const FloodCase& each : kCases) {
        SCOPED_TRACE(each.name);
        TlsConnection client = StartedClient();
        Flood(client, each.stream, 100000);
        TlsConnection server;
        Flood(server, each.stream, 100000);
    }
}

TEST_F(FloodTest, OfChangeCipherSpecsLeavesNothingBehind) {
    TlsConnection client = StartedClient();
    Flood(client, RecordOf(20, Octets({1})), 100000);
}

TEST_F(FloodTest, OfServerMessagesLeavesNothingBehind) {
    const ByteString authority = derElement(0x30, nameContent("Another Authority"));
    const FloodCase kCases[] = {
        {"ServerHello", MessageOf(2, ServerHelloFields{.sessionId = ByteString(255, 'i')}.Body())},
        {"Certificate", MessageOf(11, CertificateBody({pbx.certificate}))},
        {"CertificateRequest", MessageOf(13, CertificateRequestBody(Octets({1}), {authority}))},
        {"ServerKeyExchange", MessageOf(12, ByteString(500, 'k'))},
    };
    for (const FloodCase& each : kCases) {
        SCOPED_TRACE(each.name);
        TlsConnection client = StartedClient();
        Flood(client, HandshakeRecord(each.stream), 100000);
    }
}

TEST_F(FloodTest, OfServerHelloDonesLeavesNothingBehind) {
    TlsConnection client = ClientWithCertificate();
    Flood(client, HandshakeRecord(MessageOf(14, "")), 10000);
}

TEST_F(FloodTest, OfClientHellosLeavesNothingBehind) {
    TlsConnection server;
    Flood(server, HandshakeRecord(MessageOf(1, ClientHelloFields().Body())), 5000);
}

TEST_F(FloodTest, OfSessionsFillsTheCacheAndNothingElse) {
    const CertificateChain certificate({pbx.certificate}, kSkipVerification);
    ScriptedPeer scripted(true);
    const ByteString hello = scripted.SendClientHello();
    const ByteString exchange = scripted.SendClientKeyExchange(certificate.modulus, certificate.exponent);
    const auto takeSession = [&] {
        TlsConnection server;
        server.resumeSessions = true;
        server.Feed(hello + exchange);
    };
    for (size_t count = 0; count < SessionCache::kMaxSessions; ++count) takeSession();
    EXPECT_EQ(sessionCache.Count(), SessionCache::kMaxSessions);
    const size_t before = UsedBytes();
    for (int count = 0; count < 500; ++count) takeSession();
    EXPECT_EQ(UsedBytes(), before);
    EXPECT_EQ(sessionCache.Count(), SessionCache::kMaxSessions);
}

TEST_F(FloodTest, AfterAnAlertOfOursIsNotKept) {
    TlsConnection client = StartedClient();
    client.Feed(HandshakeRecord(MessageOf(11, CertificateBody({}))));
    ASSERT_TRUE(client.Failed());
    const ByteString chunk(65536, 'x');
    const size_t before = UsedBytes();
    for (int count = 0; count < 1000; ++count) client.Feed(chunk);
    EXPECT_EQ(UsedBytes(), before);
}

// ------------------------------------------------------------------------------------------------ the longest

TEST_F(FloodTest, TheLongestMessageOfEachTypeCostsAFewTimesItsLength) {
    for (const unsigned type : {0U, 1U, 2U, 12U, 13U, 14U, 15U, 16U, 20U, 99U}) {
        SCOPED_TRACE(type);
        TlsConnection client = StartedClient();
        EXPECT_LT(PeakOfMessage(client, type, ByteString(kLongestMessageBytes, '\0')), 64 * kMegabyte);
    }
}

TEST_F(FloodTest, TheLongestMessageGivesItsMemoryBack) {
    TlsConnection client = StartedClient();
    const ByteString body(kLongestMessageBytes, '\0');
    const size_t before = UsedBytes();
    PeakOfMessage(client, 12, body);
    EXPECT_LT(UsedBytes(), before + 200000);
    EXPECT_FALSE(client.Failed());
}

TEST_F(FloodTest, TheLongestListOfEmptyCertificatesIsRefusedInTime) {
    ByteString list(kLongestMessageBytes, '\0');
    list.replace(0, 3, BigEndian(kLongestMessageBytes - 3, 3));
    for (const bool verify : {false, true}) {
        TlsConnection client = StartedClient();
        client.verifyCertificates = verify;
        EXPECT_LT(PeakOfMessage(client, 11, list), 64 * kMegabyte);
        EXPECT_EQ(Outline(client.Send({})), "21:2,43");
    }
}

TEST_F(FloodTest, TheLongestKeyExchangeIsDecryptedInTime) {
    TlsConnection server;
    server.Feed(HandshakeRecord(MessageOf(1, ClientHelloFields{.version = 0x0300}.Body())));
    EXPECT_LT(PeakOfMessage(server, 16, ByteString(kLongestMessageBytes, '\xFF')), 200 * kMegabyte);
    EXPECT_FALSE(server.Failed());
}

TEST_F(FloodTest, TheLongestListOfSuitesIsReadInTime) {
    TlsConnection server;
    const ByteString suites(65534, '\xFF');
    EXPECT_LT(PeakOfMessage(server, 1, ClientHelloFields{.suites = suites}.Body()), kMegabyte);
    EXPECT_TRUE(server.Failed());
}

TEST_F(FloodTest, TheRequestWithMostAuthoritiesIsAnsweredInTime) {
    UseTlsIdentity("client");
    TlsConnection client = ClientWithCertificate();
    const std::vector<ByteString> authorities(32767);
    PeakOfMessage(client, 13, CertificateRequestBody(ByteString(255, '\1'), authorities));
    const size_t before = Allocations();
    EXPECT_LT(PeakOfMessage(client, 14, ""), kMegabyte);
    EXPECT_LT(Allocations() - before, 1000U) << "each of 8 million texts for the log";
    EXPECT_EQ(RecordsIn(client.Send({})).size(), 4U);
}

TEST_F(FloodTest, AServerHelloDoneWithTheLongestKeyIsAnsweredInTime) {
    HandMadeCertificate large;
    large.modulus = ByteString(2048, '\xFF');
    for (const unsigned last : {0xFFU, 0xFEU}) {
        large.modulus.back() = static_cast<char>(last);
        large.exponent = ByteString(4, '\xFF');
        TlsConnection client = StartedClient();
        client.Feed(
            HandshakeRecord(MessageOf(2, ServerHelloFields().Body()) + MessageOf(11, CertificateBody({large.der()}))));
        EXPECT_LT(PeakOfMessage(client, 14, ""), kMegabyte);
        EXPECT_FALSE(client.Failed());
        EXPECT_EQ(RecordsIn(client.Send({})).size(), 3U);
    }
}

// A server that its peer makes a client would have to encrypt a secret with its own key.
TEST_F(FloodTest, AServerHelloDoneWithAnOwnKeyTooShortForTheSecretIsRefused) {
    HandMadeCertificate certificate;
    certificate.modulus = ByteString(50, '\xC3');
    setOwnCertificate({certificate.der()}, {});
    TlsConnection server;
    server.Feed(HandshakeRecord(MessageOf(1, ClientHelloFields().Body())));
    server.Send({});
    server.Feed(HandshakeRecord(MessageOf(14, "")));
    EXPECT_EQ(Outline(server.Send({})), "21:2,43");
}

TEST_F(FloodTest, ARecordOf65535BytesIsARecord) {
    const ByteString body(65535, '\xA5');
    for (const unsigned type : {20U, 21U, 22U, 23U, 99U}) {
        SCOPED_TRACE(type);
        TlsConnection client = StartedClient();
        EXPECT_EQ(client.Feed(RecordOf(type, body)), type == 23 ? body : ByteString());
        EXPECT_FALSE(client.Failed());
    }
}

TEST_F(FloodTest, AProtectedRecordOf65535BytesHasAWrongMac) {
    for (const unsigned type : {20U, 21U, 22U, 23U, 99U}) {
        SCOPED_TRACE(type);
        TlsPair pair;
        pair.Handshake();
        EXPECT_EQ(pair.client.Feed(RecordOf(type, ByteString(65535, '\xA5'))), "");
        EXPECT_TRUE(pair.client.Failed());
        EXPECT_EQ(RecordsIn(pair.client.Send({})).size(), 1U);
    }
}

// Nothing of a message is rendered that the log will not take: in hexadecimal it would be twice as long.
TEST_F(FloodTest, NothingIsRenderedAboveTheThreshold) {
    const Settings before = settings;
    settings.loglevel = 8;
    settings.logfile = "trace.log";
    settings.loglength = 1 << 30;
    for (const unsigned type : {0U, 1U, 2U, 12U, 15U, 16U}) {
        SCOPED_TRACE(type);
        TlsConnection client = StartedClient();
        ByteString message = MessageOf(type, ByteString(kMegabyte, '\x03'));
        for (; message.size() > 60000; message.erase(0, 60000)) {
            client.Feed(HandshakeRecord(std::string_view(message).substr(0, 60000)));
        }
        const ByteString last = HandshakeRecord(message);
        EXPECT_LT(PeakBytes([&] { client.Feed(last); }), kMegabyte) << "the message is there already";
    }
    settings = before;
}

}  // namespace
}  // namespace velmora
