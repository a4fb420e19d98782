#include "tls/record_mac.h"

#include <gtest/gtest.h>

#include "tests/support/hex.h"

namespace velmora {
namespace {

const ByteString kMd5Secret = fromHex("101112131415161718191a1b1c1d1e1f");
const ByteString kSha1Secret = fromHex("101112131415161718191a1b1c1d1e1f20212223");
constexpr uint64_t kGreatSequence = 0x0102030405060708;

struct MacRow {
    MacKind kind;
    uint16_t version;
    uint64_t sequence;
    RecordType type;
    const char* mac;
};

// Over "the content" under the secrets above, worked out with Python's hashlib and hmac.
const MacRow kMacRows[] = {
    {MacKind::kMd5, kTls10, 0, RecordType::kApplicationData, "288fb97fcf658da242afb93692f9d301"},
    {MacKind::kMd5, kTls10, 0, RecordType::kHandshake, "c06fd2fc3a555244f22f710e668d7934"},
    {MacKind::kMd5, kTls10, kGreatSequence, RecordType::kApplicationData, "00b1b2c70a52a24b5dc32ce1bdf4280c"},
    {MacKind::kMd5, kSsl30, 0, RecordType::kApplicationData, "a097ecf8f558b041922dad62d0ff2089"},
    {MacKind::kMd5, kSsl30, 0, RecordType::kHandshake, "915cbb2196098832097c91dc09cc8d79"},
    {MacKind::kMd5, kSsl30, kGreatSequence, RecordType::kApplicationData, "badcf7889ffb2eec4ecc922b47afc00a"},
    {MacKind::kSha1, kTls10, 0, RecordType::kApplicationData, "0a19f8120eee1dcb52a07e24b6d557ce8f017fc8"},
    {MacKind::kSha1, kTls10, 0, RecordType::kHandshake, "8c74613154fb6dd55380a38f157a7f723c071348"},
    {MacKind::kSha1, kTls10, kGreatSequence, RecordType::kHandshake, "ec5fd7d0ea64dd777c015fe1a8355e86077e7e79"},
    {MacKind::kSha1, kSsl30, 0, RecordType::kApplicationData, "9e9cbc0d1f8d294c44d3bb0e901fc07b05fa7e87"},
    {MacKind::kSha1, kSsl30, 0, RecordType::kHandshake, "e25489123b68138ed15d27d0f08c4a9a8d61a9b5"},
    {MacKind::kSha1, kSsl30, kGreatSequence, RecordType::kHandshake, "e08c0c3d3a99ce4c17fabecb741ad6318e6162fd"},
};

RecordMac MacOf(MacKind kind) {
    return {kind, kind == MacKind::kMd5 ? kMd5Secret : kSha1Secret};
}

TEST(RecordMac, IsHmacInTlsAndTwoPaddedDigestsInSsl3) {
    for (const MacRow& row : kMacRows) {
        SCOPED_TRACE(row.mac);
        ByteString mac(row.kind == MacKind::kMd5 ? 16 : 20, '\0');
        MacOf(row.kind).Write({row.sequence, row.type, row.version, "the content"}, mac.data());
        EXPECT_EQ(toHex(mac), row.mac);
    }
}

TEST(RecordMac, GivesTheSameMacEveryTime) {
    const RecordMac mac = MacOf(MacKind::kSha1);
    for (int round = 0; round < 3; ++round) {
        ByteString bytes(20, '\0');
        mac.Write({0, RecordType::kApplicationData, kTls10, "the content"}, bytes.data());
        EXPECT_EQ(toHex(bytes), "0a19f8120eee1dcb52a07e24b6d557ce8f017fc8");
    }
}

TEST(RecordMac, MayBeWrittenBehindTheContentInTheSameString) {
    ByteString bytes = "the content" + ByteString(20, '\0');
    MacOf(MacKind::kSha1)
        .Write({0, RecordType::kApplicationData, kTls10, std::string_view(bytes).substr(0, 11)}, bytes.data() + 11);
    EXPECT_EQ(bytes, "the content" + fromHex("0a19f8120eee1dcb52a07e24b6d557ce8f017fc8"));
}

TEST(RecordMac, WritesNothingWithoutAKind) {
    ByteString bytes = "untouched";
    RecordMac().Write({0, RecordType::kApplicationData, kTls10, "the content"}, bytes.data());
    RecordMac(MacKind::kNone, "").Write({0, RecordType::kApplicationData, kSsl30, "the content"}, bytes.data());
    EXPECT_EQ(bytes, "untouched");
}

}  // namespace
}  // namespace velmora
