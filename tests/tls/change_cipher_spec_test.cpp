#include <gtest/gtest.h>

#include "tests/support/hex.h"
#include "tests/support/logged.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"
#include "tests/support/tls_records.h"
#include "tls/key_derivation.h"
#include "tls/wire.h"

namespace velmora {
namespace {

using Lines = std::vector<ByteString>;
using Records = std::vector<WireRecord>;

ByteString HandshakeMessage(uint8_t type, std::string_view body) {
    return WireWriter().U8(type).Bytes24(body).Written();
}

class ChangeCipherSpec : public testing::Test {
protected:
    ChangeCipherSpec() {
        UseTlsIdentity("rsa1024");
        pair.client.SetLogPrefix("CSTA: ");
        pair.server.SetLogPrefix("PBX: ");
    }

    TlsPair pair;
};

TEST_F(ChangeCipherSpec, IsOneRecordWithTheByteOne) {
    pair.client.StartClientHandshake();
    pair.server.Feed(pair.client.Send({}));
    pair.client.Feed(pair.server.Send({}));
    const Records fromClient = CutRecords(pair.client.Send({}));
    ASSERT_EQ(fromClient.size(), 3U);
    EXPECT_EQ(fromClient[1], (WireRecord{RecordType::kChangeCipherSpec, 0x0301, "\x01"}));
}

TEST_F(ChangeCipherSpec, IsAnsweredAlikeEvenWhenItComesBeforeEverything) {
    EXPECT_EQ(Logged(9, [&] { pair.server.Feed(MakeRecord(20, "\x01")); }), Lines({
                                                                                "9 PBX: ProcessChangeCipherSpec(01)",
                                                                                "9 PBX: SendChangeCipherSpec(01)",
                                                                                "9 PBX: PerformChangeCipherSpec(0000)",
                                                                                "9 PBX: Key Block()",
                                                                                "9 PBX: Client Write MAC Secret()",
                                                                                "9 PBX: Server Write MAC Secret()",
                                                                                "9 PBX: Client Write Key()",
                                                                                "9 PBX: Server Write Key()",
                                                                            }));
    EXPECT_EQ(CutRecords(pair.server.Send({})), Records({{RecordType::kChangeCipherSpec, 0x0301, "\x01"}}));
    EXPECT_FALSE(pair.server.Failed());
    EXPECT_FALSE(pair.server.HandshakeComplete());
}

TEST_F(ChangeCipherSpec, LeavesRecordsInTheClearWhenNoSuiteHasBeenChosen) {
    pair.server.Feed(MakeRecord(20, "\x01"));
    pair.server.Send({});
    EXPECT_EQ(pair.server.Feed(MakeRecord(23, "in the clear")), "in the clear");
    EXPECT_EQ(pair.server.Send("held back"), "");
}

TEST_F(ChangeCipherSpec, CountsWhateverItsBodyIs) {
    for (const ByteString& body : {ByteString(), ByteString("\x02"), ByteString(300, 'x')}) {
        TlsPair another;
        another.server.Feed(MakeRecord(20, body));
        EXPECT_EQ(CutRecords(another.server.Send({})), Records({{RecordType::kChangeCipherSpec, 0x0301, "\x01"}}));
    }
}

TEST_F(ChangeCipherSpec, IsNotAnsweredASecondTime) {
    pair.server.Feed(MakeRecord(20, "\x01"));
    pair.server.Send({});
    EXPECT_EQ(Logged(9, [&] { pair.server.Feed(MakeRecord(20, "\x01")); }),
              Lines({"9 PBX: ProcessChangeCipherSpec(01)"}));
    EXPECT_EQ(pair.server.Send({}), "");
}

TEST_F(ChangeCipherSpec, ThatComesTooEarlyKeepsAClientFromReadingTheServersOwn) {
    pair.client.StartClientHandshake();
    pair.client.Feed(MakeRecord(20, "\x01"));
    pair.Exchange();
    EXPECT_TRUE(pair.client.Failed());
    EXPECT_FALSE(pair.client.HandshakeComplete());
}

TEST_F(ChangeCipherSpec, ThatComesTooEarlyKeepsAServerFromTakingItsKeys) {
    pair.server.Feed(MakeRecord(20, "\x01"));
    pair.server.Send({});
    pair.Handshake();
    EXPECT_FALSE(pair.server.HandshakeComplete());
    EXPECT_FALSE(pair.client.HandshakeComplete());
    EXPECT_EQ(pair.client.Send("held back"), "");
}

// Each end's log names its keys; they are the same, cut in this order.
TEST_F(ChangeCipherSpec, CutsMacSecretsThenKeysThenIvsFromTheKeyBlockTheClientsFirst) {
    const Lines lines = Logged(9, [&] { pair.Handshake(); });
    const auto valuesOf = [&lines](const ByteString& step) {
        std::vector<ByteString> values;
        for (const ByteString& line : lines) {
            const size_t found = line.find(step + "(");
            if (found == ByteString::npos) continue;
            const ByteString value = line.substr(found + step.size() + 1);
            values.push_back(value.substr(0, value.size() - 1));
        }
        return values;
    };
    const std::vector<ByteString> blocks = valuesOf("Key Block");
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks[0], blocks[1]);
    EXPECT_EQ(blocks[0].size(), 2 * 104U);
    EXPECT_EQ(valuesOf("PerformChangeCipherSpec"), std::vector<ByteString>(2, "002f"));
    EXPECT_EQ(valuesOf("Client Write MAC Secret"), std::vector<ByteString>(2, blocks[0].substr(0, 40)));
    EXPECT_EQ(valuesOf("Server Write MAC Secret"), std::vector<ByteString>(2, blocks[0].substr(40, 40)));
    EXPECT_EQ(valuesOf("Client Write Key"), std::vector<ByteString>(2, blocks[0].substr(80, 32)));
    EXPECT_EQ(valuesOf("Server Write Key"), std::vector<ByteString>(2, blocks[0].substr(112, 32)));
}

// A handshake with a server that chooses TLS_RSA_WITH_3DES_EDE_CBC_SHA, which was not offered. Without keys, there is
// no master secret either, and the proofs are over an empty one.
TEST_F(ChangeCipherSpec, LeavesRecordsInTheClearAndHoldsDataBackUnderASuiteThatIsNotKnown) {
    TlsConnection& client = pair.client;
    Transcript transcript;
    client.StartClientHandshake();
    transcript.Append(CutRecords(client.Send({})).at(0).fragment);

    const ByteString hello =
        HandshakeMessage(2, WireWriter().U16(0x0301).Bytes(ByteString(32, 's')).U8(0).U16(0x000A).U8(0).Written());
    const ByteString helloDone = HandshakeMessage(14, "");
    transcript.Append(hello + helloDone);
    client.Feed(MakeRecord(22, hello + helloDone));
    const ByteString clientFinished = HandshakeMessage(20, VerifyData(kTls10, "", Endpoint::kClient, transcript));
    EXPECT_EQ(CutRecords(client.Send({})), Records({{RecordType::kChangeCipherSpec, 0x0301, "\x01"},
                                                    {RecordType::kHandshake, 0x0301, clientFinished}}));
    EXPECT_EQ(client.Suite().number, 0x000A);
    EXPECT_FALSE(client.Suite().IsKnown());

    transcript.Append(clientFinished);
    client.Feed(MakeRecord(20, "\x01"));
    client.Feed(MakeRecord(22, HandshakeMessage(20, VerifyData(kTls10, "", Endpoint::kServer, transcript))));
    EXPECT_TRUE(client.HandshakeComplete());
    EXPECT_FALSE(client.Failed());
    client.Send({});
    EXPECT_EQ(client.Send("held back for ever"), "");
    EXPECT_EQ(client.Feed(MakeRecord(23, "in the clear")), "in the clear");
    client.Feed(MakeRecord(21, fromHex("0100")));
    EXPECT_EQ(CutRecords(client.Send({})), Records({{RecordType::kAlert, 0x0301, fromHex("0100")}}));
}

}  // namespace
}  // namespace velmora
