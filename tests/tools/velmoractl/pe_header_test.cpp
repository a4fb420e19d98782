#include "tools/velmoractl/pe_header.h"

#include <gtest/gtest.h>

#include "config/byte_string.h"

namespace velmora::ctl {
namespace {

// Microsoft's "PE Format" page: what the fields are and where.
constexpr uint16_t kX64 = 0x8664;
constexpr uint16_t kX86 = 0x014C;
constexpr uint16_t kArm64 = 0xAA64;
constexpr uint16_t kDll = 0x2000;
constexpr uint16_t kExecutable = 0x0002;
constexpr size_t kPeAt = 0x80;

ByteString ImageHead(uint16_t machine, uint16_t characteristics) {
    ByteString bytes(kPeAt + 24, '\0');
    bytes.replace(0, 2, "MZ");
    bytes[0x3C] = static_cast<char>(kPeAt);
    bytes.replace(kPeAt, 4, ByteString("PE\0\0", 4));
    bytes[kPeAt + 4] = static_cast<char>(machine & 0xFF);
    bytes[kPeAt + 5] = static_cast<char>(machine >> 8);
    bytes[kPeAt + 22] = static_cast<char>(characteristics & 0xFF);
    bytes[kPeAt + 23] = static_cast<char>(characteristics >> 8);
    return bytes;
}

TEST(PeHeader, TellsALibraryFor64Bit) {
    const std::optional<PeHeader> header = ReadPeHeader(ImageHead(kX64, kDll | kExecutable));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->machine, kX64);
    EXPECT_TRUE(header->library);
    EXPECT_TRUE(header->IsLibraryFor64Bit());
}

TEST(PeHeader, TellsWhatIsNone) {
    EXPECT_FALSE(ReadPeHeader(ImageHead(kX86, kDll))->IsLibraryFor64Bit());
    EXPECT_FALSE(ReadPeHeader(ImageHead(kArm64, kDll))->IsLibraryFor64Bit());
    EXPECT_FALSE(ReadPeHeader(ImageHead(kX64, kExecutable))->IsLibraryFor64Bit());
}

TEST(PeHeader, IsNotInAFileThatIsCutShort) {
    const ByteString whole = ImageHead(kX64, kDll);
    for (size_t length = 0; length < whole.size(); ++length) {
        // A block of its own for each: the sanitizers see a byte that is read behind it.
        const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
        EXPECT_FALSE(ReadPeHeader({cut.data(), cut.size()})) << length;
    }
    EXPECT_TRUE(ReadPeHeader(whole));
}

TEST(PeHeader, IsNotInAFileOfAnotherKind) {
    for (const size_t position : {size_t{0}, size_t{1}, kPeAt, kPeAt + 1, kPeAt + 2, kPeAt + 3}) {
        ByteString bytes = ImageHead(kX64, kDll);
        bytes[position] = 'x';
        EXPECT_FALSE(ReadPeHeader(bytes)) << position;
    }
}

TEST(PeHeader, IsNotBehindTheEnd) {
    ByteString bytes = ImageHead(kX64, kDll);
    for (const size_t position : {size_t{0x3D}, size_t{0x3E}, size_t{0x3F}}) {
        bytes[position] = '\xFF';
        EXPECT_FALSE(ReadPeHeader(bytes)) << position;
    }
}

}  // namespace
}  // namespace velmora::ctl
