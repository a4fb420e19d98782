#include "tls/wire.h"

#include <gtest/gtest.h>

#include "tests/support/hex.h"

namespace velmora {
namespace {

TEST(WireReader, ReadsOneFieldBehindTheOther) {
    const ByteString message = fromHex("01 0203 040506 616263 ff");
    WireReader reader(message);
    EXPECT_EQ(reader.U8(), 0x01);
    EXPECT_EQ(reader.U16(), 0x0203);
    EXPECT_EQ(reader.U24(), 0x040506U);
    EXPECT_EQ(reader.Bytes(3), "abc");
    EXPECT_EQ(reader.U8(), 0xFF);
    EXPECT_EQ(reader.Rest(), "");
}

TEST(WireReader, ShowsWhatHasNotBeenReadYet) {
    WireReader reader("abcdef");
    EXPECT_EQ(reader.Rest(), "abcdef");
    reader.U16();
    EXPECT_EQ(reader.Rest(), "cdef");
    reader.Bytes(3);
    EXPECT_EQ(reader.Rest(), "f");
}

TEST(WireReader, GivesZeroForANumberThatIsNotWhollyThereAndIsThenAtTheEnd) {
    WireReader two("\x01");
    EXPECT_EQ(two.U16(), 0);
    EXPECT_EQ(two.Rest(), "");
    WireReader three("\x01\x02");
    EXPECT_EQ(three.U24(), 0U);
    EXPECT_EQ(three.Rest(), "");
}

TEST(WireReader, GivesZerosAndNoBytesBehindTheEnd) {
    WireReader reader("");
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(reader.U8(), 0);
        EXPECT_EQ(reader.U16(), 0);
        EXPECT_EQ(reader.U24(), 0U);
        EXPECT_EQ(reader.Bytes(1), "");
        EXPECT_EQ(reader.Rest(), "");
    }
}

TEST(WireReader, GivesOfAByteStringWhatIsThere) {
    WireReader reader("abc");
    EXPECT_EQ(reader.Bytes(0), "");
    EXPECT_EQ(reader.Bytes(2), "ab");
    EXPECT_EQ(reader.Bytes(65535), "c");
    EXPECT_EQ(reader.Bytes(65535), "");
}

TEST(WireReader, KeepsZeroBytesInAByteString) {
    const ByteString bytes = fromHex("00610000");
    EXPECT_EQ(WireReader(bytes).Bytes(4), bytes);
}

TEST(WireWriter, WritesOneFieldBehindTheOther) {
    WireWriter writer;
    writer.U8(1).U16(0x0203).U24(0x040506).Bytes("abc").U8(0xFF);
    EXPECT_EQ(toHex(writer.Written()),
              "01"
              "0203"
              "040506"
              "616263"
              "ff");
}

TEST(WireWriter, HasWrittenNothingAtTheStart) {
    EXPECT_EQ(WireWriter().Written(), "");
    EXPECT_EQ(WireWriter().Bytes("").Written(), "");
}

TEST(WireWriter, PutsAByteStringBehindItsLength) {
    EXPECT_EQ(toHex(WireWriter().Bytes8("abc").Written()),
              "03"
              "616263");
    EXPECT_EQ(toHex(WireWriter().Bytes16("abc").Written()),
              "0003"
              "616263");
    EXPECT_EQ(toHex(WireWriter().Bytes24("abc").Written()),
              "000003"
              "616263");
    EXPECT_EQ(toHex(WireWriter().Bytes8("").Bytes16("").Bytes24("").Written()),
              "00"
              "0000"
              "000000");
}

TEST(WireWriter, PutsTheLongestByteStringsBehindTheirLengths) {
    EXPECT_EQ(toHex(WireWriter().Bytes8(ByteString(255, 'x')).Written().substr(0, 2)), "ff78");
    EXPECT_EQ(toHex(WireWriter().Bytes16(ByteString(65535, 'x')).Written().substr(0, 3)), "ffff78");
    EXPECT_EQ(toHex(WireWriter().Bytes24(ByteString(65536, 'x')).Written().substr(0, 4)), "01000078");
}

TEST(WireWriter, KeepsZeroBytesInAByteString) {
    const ByteString bytes = fromHex("00610000");
    EXPECT_EQ(WireWriter().Bytes(bytes).Written(), bytes);
}

}  // namespace
}  // namespace velmora
