#include <gtest/gtest.h>

#include "tests/support/logged.h"
#include "tests/support/seeded_bytes.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"
#include "tests/support/tls_records.h"

namespace velmora {
namespace {

using Lines = std::vector<ByteString>;
using Types = std::vector<int>;

class RecordLayer : public testing::Test {
protected:
    RecordLayer() {
        UseTlsIdentity("rsa1024");
        pair.client.SetLogPrefix("CSTA: ");
        pair.server.SetLogPrefix("PBX: ");
    }

    // A record of application data from the server.
    ByteString FromServer(std::string_view plaintext) { return pair.server.Send(plaintext); }

    // What the client makes of bytes that come one at a time.
    ByteString FeedBytewise(TlsConnection& connection, std::string_view bytes) {
        ByteString plaintext;
        for (size_t index = 0; index < bytes.size(); ++index) plaintext += connection.Feed(bytes.substr(index, 1));
        return plaintext;
    }

    TlsPair pair;
};

TEST_F(RecordLayer, HoldsApplicationDataBackUntilTheFirstSendAfterTheHandshakeIsComplete) {
    pair.client.StartClientHandshake();
    const ByteString hello = pair.client.Send("one ");
    EXPECT_EQ(RecordTypes(hello), Types({22}));
    pair.server.Feed(hello);
    pair.client.Feed(pair.server.Send("from "));
    const ByteString finish = pair.client.Send("two ");
    EXPECT_EQ(RecordTypes(finish), Types({22, 20, 22}));
    pair.server.Feed(finish);
    ASSERT_TRUE(pair.server.HandshakeComplete());

    // One record behind the handshake's, with all that waited: it did not leave when the handshake completed.
    const ByteString serverFinish = pair.server.Send("the server");
    EXPECT_EQ(RecordTypes(serverFinish), Types({20, 22, 23}));
    EXPECT_EQ(pair.client.Feed(serverFinish), "from the server");
    ASSERT_TRUE(pair.client.HandshakeComplete());
    const ByteString held = pair.client.Send("three");
    EXPECT_EQ(RecordTypes(held), Types({23}));
    EXPECT_EQ(pair.server.Feed(held), "one two three");
    EXPECT_EQ(pair.client.Send({}), "");
}

// A peer in the clear can have the owner of this end send again and again, and never end the handshake.
TEST_F(RecordLayer, DropsWhatWouldMakeMoreThanAMebibyteWait) {
    const ByteString half(524288, 'x');
    const Lines log = Logged(9, [&] {
        pair.client.Send(half);
        pair.client.Send(half);
        pair.client.Send("one more");
    });
    EXPECT_EQ(log, Lines({"1 CSTA: Too much waits for the end of the handshake: dropped what was to be sent"}));
    pair.Handshake();
    pair.Exchange();
    EXPECT_EQ(pair.serverReceived, half + half);
    EXPECT_EQ(pair.server.Feed(pair.client.Send(half + half + "x")), half + half + "x") << "nothing waits any more";
}

TEST_F(RecordLayer, ReleasesWhatWaitedWithASendOfNothing) {
    pair.client.Send("waiting");
    pair.Handshake();
    EXPECT_EQ(pair.serverReceived, "waiting");
}

TEST_F(RecordLayer, WritesNoRecordForNothing) {
    pair.Handshake();
    EXPECT_EQ(pair.client.Send({}), "");
}

TEST_F(RecordLayer, CutsDataIntoFragmentsOf16384Bytes) {
    pair.Handshake();
    struct {
        size_t plaintext;
        std::vector<size_t> fragments;  // with MAC and padding: to 16 bytes above 20 more
    } const rows[] = {
        {1, {32}}, {16384, {16416}}, {16385, {16416, 32}}, {32768, {16416, 16416}}, {40000, {16416, 16416, 7264}},
    };
    SeededBytes random(1);
    for (const auto& row : rows) {
        const ByteString plaintext = random.take(row.plaintext);
        const ByteString bytes = pair.client.Send(plaintext);
        std::vector<size_t> fragments;
        for (const WireRecord& record : CutRecords(bytes)) {
            EXPECT_EQ(record.type, RecordType::kApplicationData);
            EXPECT_EQ(record.version, 0x0301);
            fragments.push_back(record.fragment.size());
        }
        EXPECT_EQ(fragments, row.fragments);
        EXPECT_EQ(pair.server.Feed(bytes), plaintext);
    }
}

TEST_F(RecordLayer, TakesRecordsThatComeByteByByte) {
    pair.client.StartClientHandshake();
    for (int flight = 0; flight < 2; ++flight) {
        EXPECT_EQ(FeedBytewise(pair.server, pair.client.Send({})), "");
        EXPECT_EQ(FeedBytewise(pair.client, pair.server.Send({})), "");
    }
    ASSERT_TRUE(pair.client.HandshakeComplete());
    ASSERT_TRUE(pair.server.HandshakeComplete());

    const ByteString bytes = FromServer("when its last byte is there");
    for (size_t index = 0; index + 1 < bytes.size(); ++index) EXPECT_EQ(pair.client.Feed(bytes.substr(index, 1)), "");
    EXPECT_EQ(pair.client.Feed(bytes.substr(bytes.size() - 1)), "when its last byte is there");
}

TEST_F(RecordLayer, TakesThreeRecordsWhereverTheStreamIsCut) {
    pair.Handshake();
    ByteString stream;
    for (const char* plaintext : {"one", "two", "six"}) stream += FromServer(plaintext);
    const size_t recordBytes = stream.size() / 3;
    for (size_t cut = 0; cut <= stream.size(); ++cut) {
        TlsConnection client = pair.client;
        const ByteString before = client.Feed(std::string_view(stream).substr(0, cut));
        EXPECT_EQ(before, ByteString("onetwosix").substr(0, cut / recordBytes * 3)) << cut;
        EXPECT_EQ(before + client.Feed(std::string_view(stream).substr(cut)), "onetwosix") << cut;
    }
}

TEST_F(RecordLayer, HandsOutWhatHasComeOnlyOnce) {
    pair.Handshake();
    EXPECT_EQ(pair.client.Feed(FromServer("once")), "once");
    EXPECT_EQ(pair.client.Feed({}), "");
    EXPECT_EQ(pair.client.Feed(FromServer("again")), "again");
}

TEST_F(RecordLayer, AnswersARecordWithAnyByteChangedWithAlert20AndHandsNothingOut) {
    pair.Handshake();
    const ByteString record = FromServer("to be changed");
    // But for the last block: what is changed there is chance, and so may be what it counts as padding.
    for (size_t index = 5; index < record.size() - 16; ++index) {
        TlsPair another = pair;
        ByteString changed = record;
        changed[index] = static_cast<char>(changed[index] ^ 1);
        ByteString plaintext;
        EXPECT_EQ(Logged(9, [&] { plaintext = another.client.Feed(changed); }),
                  Lines({"3 CSTA: Bad Record Mac", "9 CSTA: SendAlert(0214)"}))
            << index;
        EXPECT_EQ(plaintext, "");
        EXPECT_TRUE(another.client.Failed());
        EXPECT_FALSE(another.client.PeerAlertReceived());
        const ByteString alert = another.client.Send({});
        EXPECT_EQ(RecordTypes(alert), Types({21}));
        EXPECT_EQ(Logged(5, [&] { another.server.Feed(alert); }), Lines({"5 PBX: Alert(2, 20)"}));
        EXPECT_TRUE(another.server.PeerAlertReceived());
    }
}

TEST_F(RecordLayer, LogsABadMacAtLevel3) {
    pair.Handshake();
    ByteString record = FromServer("data");
    record.back() = static_cast<char>(record.back() ^ 0xFF);
    record[5] = static_cast<char>(record[5] ^ 0xFF);
    TlsConnection another = pair.client;
    EXPECT_EQ(Logged(2, [&] { another.Feed(record); }), Lines());
    EXPECT_EQ(Logged(3, [&] { pair.client.Feed(record); }), Lines({"3 CSTA: Bad Record Mac"}));
}

TEST_F(RecordLayer, HandsOutWhatCameBeforeABadRecordAndNothingBehindIt) {
    pair.Handshake();
    const ByteString good = FromServer("good");
    ByteString bad = FromServer("bad");
    bad[5] = static_cast<char>(bad[5] ^ 1);
    EXPECT_EQ(pair.client.Feed(good + bad + FromServer("behind")), "good");
    EXPECT_EQ(pair.client.Feed({}), "");
    EXPECT_EQ(RecordTypes(pair.client.Send({})), Types({21}));
}

TEST_F(RecordLayer, DropsWhateverComesOnceAnAlertOfOursHasEndedTheConnection) {
    pair.Handshake();
    pair.client.Feed(MakeRecord(23, "not protected"));
    ASSERT_TRUE(pair.client.Failed());
    pair.client.Send({});
    const ByteString stream = FromServer("data") + MakeRecord(21, "\x01") + MakeRecord(99, "x") + MakeRecord(23, "y");
    EXPECT_EQ(Logged(9, [&] { EXPECT_EQ(pair.client.Feed(stream), ""); }), Lines());
    EXPECT_EQ(FeedBytewise(pair.client, stream), "");
    EXPECT_EQ(pair.client.Send({}), "");
}

TEST_F(RecordLayer, GoesOnSendingWhatItsOwnerGivesItAfterAnAlertOfOurs) {
    pair.Handshake();
    pair.client.Feed(MakeRecord(23, "not protected"));
    const ByteString bytes = pair.client.Send("still");
    EXPECT_EQ(RecordTypes(bytes), Types({21, 23}));
    EXPECT_EQ(pair.server.Feed(bytes), "still");
}

TEST_F(RecordLayer, TakesARecordThatIsNotProtectedForOneWithABadMacOnceRecordsAre) {
    pair.Handshake();
    for (const size_t length : {0U, 1U, 15U, 16U, 19U, 20U, 32U, 100U}) {
        TlsConnection client = pair.client;
        EXPECT_EQ(client.Feed(MakeRecord(23, ByteString(length, 'x'))), "");
        EXPECT_TRUE(client.Failed()) << length;
        EXPECT_EQ(RecordTypes(client.Send({})), Types({21})) << length;
    }
}

TEST_F(RecordLayer, HandsOutDataThatComesInTheClearBeforeAnyHandshake) {
    EXPECT_EQ(pair.server.Feed(MakeRecord(23, "in the clear") + MakeRecord(23, "") + MakeRecord(23, ".")),
              "in the clear.");
    EXPECT_EQ(pair.server.Send({}), "");
}

TEST_F(RecordLayer, TakesRecordsOfAnyLengthThatCanBeSaid) {
    for (const size_t length : {16384U, 16385U, 18433U, 65535U}) {
        const ByteString plaintext(length, 'x');
        const ByteString record = MakeRecord(23, plaintext);
        EXPECT_EQ(pair.server.Feed(std::string_view(record).substr(0, record.size() - 1)), "");
        EXPECT_EQ(pair.server.Feed(std::string_view(record).substr(record.size() - 1)), plaintext);
    }
}

// The version is bytes 1 and 2 of a record.
ByteString WithVersions(const ByteString& bytes, uint16_t version) {
    ByteString changed;
    for (const WireRecord& record : CutRecords(bytes)) changed += RecordBytes({record.type, version, record.fragment});
    return changed;
}

TEST_F(RecordLayer, DoesNotLookAtTheVersionInAReceivedRecord) {
    for (const uint16_t version : std::vector<uint16_t>{0x0000, 0x0200, 0x0300, 0x0302, 0x0303, 0xFFFF}) {
        TlsPair another;
        another.client.StartClientHandshake();
        for (int flight = 0; flight < 2; ++flight) {
            another.server.Feed(WithVersions(another.client.Send({}), version));
            another.client.Feed(WithVersions(another.server.Send({}), version));
        }
        EXPECT_EQ(another.server.Feed(WithVersions(another.client.Send("to the server"), version)), "to the server");
        EXPECT_EQ(another.client.Feed(WithVersions(another.server.Send("to the client"), version)), "to the client");
    }
}

TEST_F(RecordLayer, LogsARecordOfUnknownTypeAtLevel5AndGoesOn) {
    for (const int type : {0, 1, 19, 24, 128, 255}) {
        const ByteString record = MakeRecord(static_cast<uint8_t>(type), "whatever");
        const ByteString line = "5 PBX: Received unknown type " + std::to_string(type) + " on record layer";
        EXPECT_EQ(Logged(5, [&] { EXPECT_EQ(pair.server.Feed(record), ""); }), Lines({line}));
        EXPECT_EQ(Logged(4, [&] { EXPECT_EQ(pair.server.Feed(record), ""); }), Lines());
    }
    EXPECT_FALSE(pair.server.Failed());
    EXPECT_EQ(pair.server.Send({}), "");
    EXPECT_EQ(pair.server.Feed(MakeRecord(23, "data")), "data");
}

TEST_F(RecordLayer, EndsTheConnectionOverAProtectedRecordWhoseTypeWasChanged) {
    pair.Handshake();
    ByteString record = FromServer("data");
    record[0] = 99;
    EXPECT_EQ(Logged(5, [&] { pair.client.Feed(record); }), Lines({"3 CSTA: Bad Record Mac"}));
    EXPECT_TRUE(pair.client.Failed());
}

}  // namespace
}  // namespace velmora
