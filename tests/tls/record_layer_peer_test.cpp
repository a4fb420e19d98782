#include <gtest/gtest.h>

#include <ostream>

#include "tests/support/logged.h"
#include "tests/support/seeded_bytes.h"
#include "tests/support/tls_peer.h"
#include "tests/support/tls_records.h"

// Records as a peer sees them that has all its keys, digests and ciphers from libcrypto.

namespace velmora {
namespace {

struct Link {
    const char* name;
    uint16_t version;
    uint16_t suite;
    bool connectionIsServer;
};

void PrintTo(const Link& link, std::ostream* stream) {
    *stream << link.name;
}

// A client speaks TLS 1.0 only.
const Link kStreamLinks[] = {
    {"ServerSsl3Rc4Md5", 0x0300, 0x0004, true}, {"ServerSsl3Rc4Sha", 0x0300, 0x0005, true},
    {"ServerTlsRc4Md5", 0x0301, 0x0004, true},  {"ServerTlsRc4Sha", 0x0301, 0x0005, true},
    {"ClientTlsRc4Md5", 0x0301, 0x0004, false}, {"ClientTlsRc4Sha", 0x0301, 0x0005, false},
};
const Link kBlockLinks[] = {
    {"ServerSsl3Aes128", 0x0300, 0x002F, true}, {"ServerSsl3Aes256", 0x0300, 0x0035, true},
    {"ServerTlsAes128", 0x0301, 0x002F, true},  {"ServerTlsAes256", 0x0301, 0x0035, true},
    {"ClientTlsAes128", 0x0301, 0x002F, false}, {"ClientTlsAes256", 0x0301, 0x0035, false},
};

class RecordLayerPeer : public testing::TestWithParam<Link> {
protected:
    RecordLayerPeer() : peer(GetParam().version, GetParam().suite, LoadTlsIdentity("rsa1024")) {
        UseTlsIdentity("rsa1024");
    }

    void SetUp() override { Connect(); }

    // A new connection, and a new peer on it.
    void Connect() {
        connection = TlsConnection();
        connection.verifyCertificates = false;
        peer = TlsPeer(GetParam().version, GetParam().suite, LoadTlsIdentity("rsa1024"));
        ASSERT_TRUE(GetParam().connectionIsServer ? peer.HandshakeWithServer(connection)
                                                  : peer.HandshakeWithClient(connection));
    }

    // The connection has answered with alert 20, which is itself protected, and has ended.
    void ExpectBadRecordMac() {
        const std::vector<PeerRecord> records = peer.Read(connection.Send({}));
        ASSERT_EQ(records.size(), 1U);
        EXPECT_EQ(records[0].type, 21);
        EXPECT_EQ(records[0].version, GetParam().version);
        EXPECT_EQ(records[0].content, "\x02\x14");
        EXPECT_TRUE(records[0].macRight);
        EXPECT_TRUE(connection.Failed());
    }

    TlsConnection connection;
    TlsPeer peer;
};

// Padding there is under a block cipher alone.
class PaddingPeer : public RecordLayerPeer {};

ByteString LinkName(const testing::TestParamInfo<Link>& link) {
    return link.param.name;
}

INSTANTIATE_TEST_SUITE_P(Stream, RecordLayerPeer, testing::ValuesIn(kStreamLinks), LinkName);
INSTANTIATE_TEST_SUITE_P(Block, RecordLayerPeer, testing::ValuesIn(kBlockLinks), LinkName);
INSTANTIATE_TEST_SUITE_P(Block, PaddingPeer, testing::ValuesIn(kBlockLinks), LinkName);

TEST_P(RecordLayerPeer, ReadsWhatTheConnectionWrites) {
    SeededBytes random(1);
    for (int run = 0; run < 300; ++run) {
        const ByteString plaintext = random.take(1 + random.upTo(200));
        const std::vector<PeerRecord> records = peer.Read(connection.Send(plaintext));
        ASSERT_EQ(records.size(), 1U);
        ASSERT_EQ(records[0].type, 23);
        ASSERT_EQ(records[0].version, GetParam().version);
        ASSERT_TRUE(records[0].macRight) << run;
        ASSERT_EQ(records[0].content, plaintext);
        const size_t padding = 15 - (plaintext.size() + peer.MacBytes()) % 16;
        const ByteString shortest(padding + 1, static_cast<char>(padding));
        ASSERT_EQ(records[0].padding, peer.BlockMode() ? shortest : ByteString());
    }
}

TEST_P(RecordLayerPeer, WritesWhatTheConnectionReads) {
    SeededBytes random(2);
    for (int run = 0; run < 300; ++run) {
        const ByteString plaintext = random.take(random.upTo(200));
        ASSERT_EQ(connection.Feed(peer.Record(23, plaintext)), plaintext) << run;
    }
    EXPECT_EQ(connection.Send({}), "");
}

TEST_P(RecordLayerPeer, FindsAtMost16384BytesOfContentInARecord) {
    SeededBytes random(3);
    const struct {
        size_t plaintext;
        std::vector<size_t> contents;
    } rows[] = {{16384, {16384}}, {16385, {16384, 1}}, {50000, {16384, 16384, 16384, 848}}};
    for (const auto& row : rows) {
        const ByteString plaintext = random.take(row.plaintext);
        ByteString read;
        std::vector<size_t> contents;
        for (const PeerRecord& record : peer.Read(connection.Send(plaintext))) {
            EXPECT_TRUE(record.macRight);
            contents.push_back(record.content.size());
            read += record.content;
        }
        EXPECT_EQ(contents, row.contents);
        EXPECT_EQ(read, plaintext);
    }
}

TEST_P(RecordLayerPeer, MaySendLongerRecordsThanTheStandardAllows) {
    for (const size_t length : {16385U, 65000U}) {
        const ByteString plaintext(length, 'x');
        EXPECT_EQ(connection.Feed(peer.Record(23, plaintext)), plaintext);
    }
}

TEST_P(RecordLayerPeer, MayNameAnyVersionInTheHeaderSinceTheMacTakesTheConnections) {
    for (const int version : {0x0000, 0x0300, 0x0301, 0x0302, 0xFFFF}) {
        peer.headerVersion = static_cast<uint16_t>(version);
        EXPECT_EQ(connection.Feed(peer.Record(23, "data")), "data") << version;
    }
}

TEST_P(PaddingPeer, MaySendMorePaddingThanNeededAndFillItAsItLikes) {
    SeededBytes random(4);
    for (int run = 0; run < 200; ++run) {
        const ByteString content = random.take(random.upTo(40));
        ByteString plaintext = content + peer.NextMac(23, content);
        const size_t padding = 15 - plaintext.size() % 16 + 16 * random.upTo(14);
        plaintext += random.take(padding) + static_cast<char>(padding);
        ASSERT_EQ(connection.Feed(peer.RecordAround(23, plaintext)), content) << run;
    }
}

TEST_P(PaddingPeer, GetsAlert20ForARecordThatCountsMorePaddingThanItHas) {
    ByteString plaintext = "twelve bytes" + peer.NextMac(23, "twelve bytes") + ByteString(16, 48);
    EXPECT_EQ(Logged(3, [&] { EXPECT_EQ(connection.Feed(peer.RecordAround(23, plaintext)), ""); }),
              std::vector<ByteString>({"3 Bad Record Mac"}));
    ExpectBadRecordMac();
}

TEST_P(RecordLayerPeer, GetsAlert20ForABodyOfAnyLengthTooShortForAMac) {
    const size_t step = peer.BlockMode() ? 16 : 1;
    for (size_t length = 0; length < peer.MacBytes(); length += step) {
        Connect();
        EXPECT_EQ(connection.Feed(peer.RecordAround(23, ByteString(length, '\0'))), "");
        ExpectBadRecordMac();
    }
}

TEST_P(PaddingPeer, GetsAlert20ForPaddingThatLeavesTooLittleForAMac) {
    EXPECT_EQ(connection.Feed(peer.RecordAround(23, ByteString(32, 31))), "");
    ExpectBadRecordMac();
}

TEST_P(RecordLayerPeer, GetsAlert20ForEveryChangedByteOfAMac) {
    for (size_t index = 0; index < peer.MacBytes(); ++index) {
        Connect();
        ByteString plaintext = "twelve bytes" + peer.NextMac(23, "twelve bytes");
        plaintext[12 + index] = static_cast<char>(plaintext[12 + index] ^ 0x80);
        if (peer.BlockMode()) plaintext += ByteString(16, 15);
        EXPECT_EQ(connection.Feed(peer.RecordAround(23, plaintext)), "");
        ExpectBadRecordMac();
    }
}

TEST_P(RecordLayerPeer, GetsAlert20ForARecordThatIsMissing) {
    peer.Record(23, "lost on the way");
    EXPECT_EQ(connection.Feed(peer.Record(23, "data")), "");
    ExpectBadRecordMac();
}

TEST_P(RecordLayerPeer, GetsAlert20ForAMacThatCountedARecordTooMany) {
    peer.NextMac(23, "not sent");
    EXPECT_EQ(connection.Feed(peer.Record(23, "data")), "");
    ExpectBadRecordMac();
}

TEST_P(RecordLayerPeer, KeepsItsCountOverRecordsThatAreIgnored) {
    const ByteString line = "5 Received unknown type 24 on record layer";
    EXPECT_EQ(Logged(5, [&] { EXPECT_EQ(connection.Feed(peer.Record(24, "unknown")), ""); }),
              std::vector<ByteString>({line}));
    EXPECT_EQ(connection.Feed(peer.Record(21, "\x02")), "");
    EXPECT_EQ(connection.Feed(peer.Record(23, "")), "");
    EXPECT_EQ(connection.Feed(peer.Record(23, "data")), "data");
    EXPECT_FALSE(connection.Failed());
}

TEST_P(RecordLayerPeer, DoesNotStartAnewWithASecondChangeCipherSpec) {
    EXPECT_EQ(connection.Feed(peer.Record(20, "\x01")), "");
    EXPECT_EQ(connection.Send({}), "");
    EXPECT_EQ(connection.Feed(peer.Record(23, "data")), "data");
    const std::vector<PeerRecord> records = peer.Read(connection.Send("answer"));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_TRUE(records[0].macRight);
    EXPECT_EQ(records[0].content, "answer");
}

TEST_P(RecordLayerPeer, IsAnsweredOnceWhenItClosesAndMayGoOn) {
    const ByteString closure("\x01\x00", 2);
    connection.Feed(peer.Record(21, closure));
    const std::vector<PeerRecord> records = peer.Read(connection.Send({}));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].type, 21);
    EXPECT_EQ(records[0].content, closure);
    EXPECT_EQ(connection.Feed(peer.Record(21, closure)), "");
    EXPECT_EQ(connection.Feed(peer.Record(23, "behind")), "behind");
    EXPECT_EQ(connection.Send({}), "");
    EXPECT_FALSE(connection.Failed());
}

TEST_P(RecordLayerPeer, MayGoOnAfterAFatalAlertOfItsOwn) {
    EXPECT_EQ(connection.Feed(peer.Record(21, "\x02\x28")), "");
    EXPECT_TRUE(connection.PeerAlertReceived());
    EXPECT_EQ(connection.Feed(peer.Record(23, "behind")), "behind");
    EXPECT_EQ(peer.Read(connection.Send("answer")).at(0).content, "answer");
}

}  // namespace
}  // namespace velmora
