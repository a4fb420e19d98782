#include <gtest/gtest.h>

#include "tests/support/counted_memory.h"
#include "tests/support/tls_records.h"
#include "tls/tls_connection.h"

namespace velmora {
namespace {

constexpr int kPieces = 200;
constexpr size_t kPieceBytes = 60000;  // 12 MB all in all
constexpr size_t kAllowedBytes = 500000;

// How far the memory that is held rises while a connection takes this piece again and again.
size_t Rise(TlsConnection& connection, const ByteString& piece) {
    return PeakBytes([&] {
        for (int count = 0; count < kPieces; ++count) {
            connection.Feed(piece);
            connection.Send({});
        }
    });
}

TEST(CountedMemory, CountsWhatIsHeldNowAndTheMostThatWas) {
    const size_t before = UsedBytes();
    const size_t peak = PeakBytes([&] {
        const ByteString bytes(kPieceBytes, 'x');
        EXPECT_GE(UsedBytes(), before + kPieceBytes);
    });
    EXPECT_EQ(UsedBytes(), before);
    EXPECT_GE(peak, kPieceBytes);
}

TEST(MemoryGrowth, StopsOnceAnAlertOfOursHasEndedTheConnection) {
    TlsConnection connection;
    connection.Feed(MakeRecord(22, ByteString("\x01\x00\x00\x00", 4)) + "\x16\x03\x01");
    ASSERT_TRUE(connection.Failed());
    connection.Send({});
    EXPECT_EQ(Rise(connection, ByteString(kPieceBytes, 'x')), 0U);
    EXPECT_EQ(Rise(connection, MakeRecord(23, ByteString(kPieceBytes, 'x'))), 0U);
}

TEST(MemoryGrowth, DoesNotComeFromRecordsThatAreWorkedOff) {
    for (const int type : {20, 21, 23, 99}) {
        TlsConnection connection;
        EXPECT_LT(Rise(connection, MakeRecord(static_cast<uint8_t>(type), ByteString(kPieceBytes, 'x'))), kAllowedBytes)
            << type;
        EXPECT_FALSE(connection.Failed());
    }
}

// A message of unknown type goes into the transcript, of which the digests alone are kept.
TEST(MemoryGrowth, DoesNotComeFromHandshakeMessagesThatAreIgnored) {
    TlsConnection connection;
    const ByteString message = ByteString("\x63\x00\xEA\x60", 4) + ByteString(kPieceBytes, 'x');
    EXPECT_LT(Rise(connection, MakeRecord(22, message)), kAllowedBytes);
    EXPECT_FALSE(connection.Failed());
}

TEST(MemoryGrowth, GivesBackWhatALongHandshakeMessageTook) {
    TlsConnection connection;
    const size_t before = UsedBytes();
    connection.Feed(MakeRecord(22, "\x63\xFF\xFF\xFF"));
    for (int count = 0; count < 1024; ++count) connection.Feed(MakeRecord(22, ByteString(16384, 'x')));
    EXPECT_LT(UsedBytes() - before, kAllowedBytes);
}

}  // namespace
}  // namespace velmora
