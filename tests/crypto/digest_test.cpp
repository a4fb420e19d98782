// What MD5 and SHA-1 share: a running state, and how it ends. Their published vectors are in md5_test and sha1_test.
#include <gtest/gtest.h>

#include "crypto/md5.h"
#include "crypto/sha1.h"

namespace velmora {
namespace {

struct Md5 {
    using State = Md5State;
    static constexpr size_t kBytes = kMd5Bytes;
    static ByteString Digest(const ByteString& message) { return md5Digest(message); }
};

struct Sha1 {
    using State = Sha1State;
    static constexpr size_t kBytes = kSha1Bytes;
    static ByteString Digest(const ByteString& message) { return sha1Digest(message); }
};

template <typename Hash>
class DigestTest : public testing::Test {
protected:
    typename Hash::State state;
};

using Hashes = testing::Types<Md5, Sha1>;
TYPED_TEST_SUITE(DigestTest, Hashes, );

TYPED_TEST(DigestTest, IsTheSameWhereverTheMessageIsSplit) {
    ByteString message;
    for (int index = 0; index < 200; ++index) message += static_cast<char>(index);
    const ByteString whole = TypeParam::Digest(message);
    for (size_t split = 0; split <= message.size(); ++split) {
        SCOPED_TRACE(split);
        typename TypeParam::State halves;
        halves.update(message.substr(0, split));
        EXPECT_EQ(halves.digest(), TypeParam::Digest(message.substr(0, split)));
        halves.update(message.substr(split));
        EXPECT_EQ(halves.digest(), whole);
    }
}

TYPED_TEST(DigestTest, IsTheSameByteByByte) {
    for (int count = 0; count < 200; ++count) this->state.update("a");
    EXPECT_EQ(this->state.digest(), TypeParam::Digest(ByteString(200, 'a')));
}

TYPED_TEST(DigestTest, IsWrittenAtTheEndOfTheMessage) {
    this->state.update("abc");
    uint8_t digest[TypeParam::kBytes];
    this->state.finish(digest);
    EXPECT_EQ(ByteString(digest, digest + sizeof digest), TypeParam::Digest("abc"));
}

// Half a gigabyte would be needed to get there the long way.
TYPED_TEST(DigestTest, CarriesTheLengthInBitsFromTheLowWordIntoTheHighOne) {
    this->state.bitCount[0] = 0xFFFFFE00;
    this->state.update(ByteString(64, 'x'));
    EXPECT_EQ(this->state.bitCount[0], 0U);
    EXPECT_EQ(this->state.bitCount[1], 1U);
}

}  // namespace
}  // namespace velmora
