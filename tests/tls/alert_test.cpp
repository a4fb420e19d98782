#include <gtest/gtest.h>

#include "tests/support/hex.h"
#include "tests/support/logged.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"
#include "tests/support/tls_records.h"
#include "tls/wire.h"

namespace velmora {
namespace {

using Lines = std::vector<ByteString>;
using Records = std::vector<WireRecord>;

ByteString AlertRecord(const char* digits) {
    return MakeRecord(21, fromHex(digits));
}

class TlsAlert : public testing::Test {
protected:
    TlsAlert() {
        UseTlsIdentity("rsa1024");
        pair.server.SetLogPrefix("PBX: ");
    }

    // The log records while the server, to which nobody has said hello, takes this alert.
    Lines LinesOf(int32_t loglevel, const char* digits) {
        return Logged(loglevel, [&] { EXPECT_EQ(pair.server.Feed(AlertRecord(digits)), ""); });
    }

    TlsPair pair;
};

TEST_F(TlsAlert, OfClosureIsAnsweredAlikeAndOnlyOnce) {
    EXPECT_EQ(LinesOf(9, "0100"), Lines({"8 PBX: Received closure alert", "9 PBX: SendAlert(0100)"}));
    EXPECT_EQ(CutRecords(pair.server.Send({})), Records({{RecordType::kAlert, 0x0301, fromHex("0100")}}));
    EXPECT_EQ(LinesOf(9, "0100"), Lines({"8 PBX: Received closure alert"}));
    EXPECT_EQ(pair.server.Send({}), "");
    EXPECT_FALSE(pair.server.Failed());
    EXPECT_FALSE(pair.server.PeerAlertReceived());
}

TEST_F(TlsAlert, OfClosureIsLoggedAtLevel8) {
    EXPECT_EQ(LinesOf(7, "0100"), Lines());
    EXPECT_EQ(LinesOf(8, "0100"), Lines({"8 PBX: Received closure alert"}));
}

TEST_F(TlsAlert, OfClosureEndsNothing) {
    EXPECT_EQ(pair.server.Feed(AlertRecord("0100") + MakeRecord(23, "behind")), "behind");
    pair.server.Send({});
    pair.Handshake();
    EXPECT_TRUE(pair.client.HandshakeComplete());
    EXPECT_TRUE(pair.server.HandshakeComplete());
    EXPECT_EQ(pair.client.Feed(pair.server.Send("data")), "data");
}

TEST_F(TlsAlert, InTheClearCountsAsABadRecordOnceRecordsAreProtected) {
    pair.Handshake();
    EXPECT_EQ(LinesOf(5, "0100"), Lines({"3 PBX: Bad Record Mac"}));
    EXPECT_TRUE(pair.server.Failed());
    EXPECT_FALSE(pair.server.PeerAlertReceived());
}

struct AlertRow {
    const char* alert;
    const char* text;
};

const AlertRow kOtherAlerts[] = {
    {"0200", "Alert(2, 0)"},  // closure, but fatal
    {"0000", "Alert(0, 0)"},  {"0228", "Alert(2, 40)"},    {"0214", "Alert(2, 20)"},  {"0101", "Alert(1, 1)"},
    {"015a", "Alert(1, 90)"}, {"8080", "Alert(128, 128)"}, {"ff00", "Alert(255, 0)"}, {"01ff", "Alert(1, 255)"},
};

TEST_F(TlsAlert, OfAnyOtherKindIsLoggedAtLevel5RememberedAndNotAnswered) {
    for (const AlertRow& row : kOtherAlerts) {
        SCOPED_TRACE(row.text);
        pair.server.Reset();
        pair.server.SetLogPrefix("PBX: ");
        EXPECT_EQ(LinesOf(4, row.alert), Lines());
        EXPECT_TRUE(pair.server.PeerAlertReceived());
        EXPECT_EQ(LinesOf(9, row.alert), Lines({ByteString("5 PBX: ") + row.text}));
        EXPECT_EQ(pair.server.Send({}), "");
        EXPECT_FALSE(pair.server.Failed());
    }
}

TEST_F(TlsAlert, EndsNothingEvenWhenItIsFatal) {
    EXPECT_EQ(pair.server.Feed(MakeRecord(23, "before ") + AlertRecord("0228") + MakeRecord(23, "behind")),
              "before behind");
    pair.Handshake();
    EXPECT_TRUE(pair.client.HandshakeComplete());
    EXPECT_EQ(pair.client.Feed(pair.server.Send("data")), "data");
}

TEST_F(TlsAlert, IsIgnoredWhenItHasFewerThanTwoBytes) {
    EXPECT_EQ(LinesOf(9, ""), Lines());
    EXPECT_EQ(LinesOf(9, "01"), Lines());
    EXPECT_EQ(LinesOf(9, "02"), Lines());
    EXPECT_FALSE(pair.server.PeerAlertReceived());
    EXPECT_EQ(pair.server.Send({}), "");
}

TEST_F(TlsAlert, IsNotJoinedFromTwoRecords) {
    EXPECT_EQ(LinesOf(9, "02"), Lines());
    EXPECT_EQ(LinesOf(9, "28"), Lines());
    EXPECT_FALSE(pair.server.PeerAlertReceived());
}

TEST_F(TlsAlert, CountsWithTheFirstTwoBytesOfItsRecord) {
    EXPECT_EQ(LinesOf(9, "02280100"), Lines({"5 PBX: Alert(2, 40)"}));
    EXPECT_EQ(pair.server.Send({}), "");
}

ByteString ClientHelloRecord(uint16_t version) {
    const ByteString body =
        WireWriter().U16(version).Bytes(ByteString(32, 'r')).U8(0).Bytes16(fromHex("000a")).Bytes8("\0").Written();
    return MakeRecord(22, WireWriter().U8(1).Bytes24(body).Written(), version);
}

TEST_F(TlsAlert, IsSentInTheVersionOfTheConnectionAndInTls10BeforeThereIsOne) {
    pair.server.Feed(ClientHelloRecord(0x0300));
    EXPECT_EQ(CutRecords(pair.server.Send({})), Records({{RecordType::kAlert, 0x0300, fromHex("0228")}}));
    EXPECT_EQ(pair.server.ProtocolVersion(), 0x0300);

    TlsPair another;
    EXPECT_EQ(another.server.ProtocolVersion(), 0);
    another.server.Feed(ClientHelloRecord(0x0200));
    EXPECT_EQ(CutRecords(another.server.Send({})), Records({{RecordType::kAlert, 0x0301, fromHex("0246")}}));
    EXPECT_EQ(another.server.ProtocolVersion(), 0x0301);
}

}  // namespace
}  // namespace velmora
