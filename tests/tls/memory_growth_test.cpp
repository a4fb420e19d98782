#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tests/support/tls_records.h"
#include "tls/tls_connection.h"

namespace velmora {
namespace {

constexpr size_t kPieceBytes = 65536;
constexpr int kPieces = 2000;  // 125 MB
constexpr long kAllowedKb = 24000;

// The most memory that the process has ever had.
long PeakKb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

long GrowthKb(TlsConnection& connection, const ByteString& piece) {
    const long before = PeakKb();
    for (int count = 0; count < kPieces; ++count) {
        connection.Feed(piece);
        connection.Send({});
    }
    return PeakKb() - before;
}

TEST(MemoryGrowth, StopsOnceAnAlertOfOursHasEndedTheConnection) {
    TlsConnection connection;
    connection.Feed(MakeRecord(20, "\x01") + MakeRecord(22, ByteString("\x01\x00\x00\x00", 4)));
    ASSERT_TRUE(connection.Failed());
    EXPECT_LT(GrowthKb(connection, ByteString(kPieceBytes, 'x')), kAllowedKb);
}

TEST(MemoryGrowth, DoesNotComeFromRecordsThatAreWorkedOff) {
    TlsConnection connection;
    EXPECT_LT(GrowthKb(connection, MakeRecord(99, ByteString(60000, 'x'))), kAllowedKb);
    EXPECT_LT(GrowthKb(connection, MakeRecord(23, ByteString(60000, 'x'))), kAllowedKb);
    EXPECT_LT(GrowthKb(connection, MakeRecord(20, ByteString(60000, 'x'))), kAllowedKb);
    EXPECT_FALSE(connection.Failed());
}

// A message of unknown type goes into the transcript, of which the digests alone are kept.
TEST(MemoryGrowth, DoesNotComeFromHandshakeMessagesThatAreIgnored) {
    TlsConnection connection;
    const ByteString message = ByteString("\x63\x00\xEA\x60", 4) + ByteString(60000, 'x');
    EXPECT_LT(GrowthKb(connection, MakeRecord(22, message)), kAllowedKb);
    EXPECT_FALSE(connection.Failed());
}

}  // namespace
}  // namespace velmora
