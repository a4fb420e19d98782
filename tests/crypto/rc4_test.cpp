#include "crypto/rc4.h"

#include <gtest/gtest.h>

#include "tests/support/hex.h"

namespace velmora {
namespace {

ByteString rc4(const ByteString& key, const ByteString& data) {
    Rc4State state;
    rc4SetKey(state, key);
    return rc4Process(state, data);
}

// 16 bytes of the key stream of each key, at two places.
struct Rc4Vector {
    const char* key;
    const char* start;   // from 0 on
    const char* at4080;  // from 4080 on
};

// RFC 6229.
const Rc4Vector kRc4Vectors[] = {
    {"0102030405", "b2396305f03dc027ccc3524a0a1118a8", "068326a2118416d21f9d04b2cd1ca050"},
    {"01020304050607", "293f02d47f37c9b633f2af5285feb46b", "f3172ceffc3b3d997c85ccd5af1a950c"},
    {"0102030405060708", "97ab8a1bf0afb96132f2f67258da15a8", "d5fa5a3469d29aaaf83d23589db8c85b"},
    {"0102030405060708090a", "ede3b04643e586cc907dc21851709902", "1f135ed14ce60a91369d2322bef25e3c"},
    {"0102030405060708090a0b0c0d0e0f10", "9ac7cc9a609d1ef7b2932899cde41b97", "ff38265c1642c1abe8d3c2fe5e572bf8"},
    {"0102030405060708090a0b0c0d0e0f101112131415161718", "0595e57fe5f0bb3c706edac8a4b2db11",
     "29a0b8aed54a132324c62e423f54b4c8"},
    {"0102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20", "eaa6bd25880bf93d3f5d1e4ca2611d91",
     "a13a7c79c7e119b5ab0296ab28c300b9"},
    {"833222772a", "80ad97bdc973df8a2e879e92a497efda", "6349d126a37afcba89794f9804914fdc"},
    {"ebb46227c6cc8b37641910833222772a", "720c94b63edf44e131d950ca211a5a30", "a2221a11b833ccb498a59540f0545f4a"},
};

TEST(Rc4, GivesTheStreamsOfRfc6229) {
    for (const Rc4Vector& vector : kRc4Vectors) {
        SCOPED_TRACE(vector.key);
        const ByteString stream = rc4(fromHex(vector.key), ByteString(4096, '\0'));
        EXPECT_EQ(toHex(stream.substr(0, 16)), vector.start);
        EXPECT_EQ(toHex(stream.substr(4080)), vector.at4080);
    }
}

TEST(Rc4, EncryptsATextUnderTheKeyKey) {
    EXPECT_EQ(toHex(rc4("Key", "Plaintext")), "bbf316e8d940af0ad3");
}

TEST(Rc4, DecryptsWhatItEncrypted) {
    EXPECT_EQ(rc4("Key", fromHex("bbf316e8d940af0ad3")), "Plaintext");
}

TEST(Rc4, GoesOnFromCallToCall) {
    const ByteString whole = rc4("Key", ByteString(600, 'x'));
    for (size_t split = 0; split <= whole.size(); ++split) {
        Rc4State state;
        rc4SetKey(state, "Key");
        const ByteString first = rc4Process(state, ByteString(split, 'x'));
        EXPECT_EQ(first + rc4Process(state, ByteString(whole.size() - split, 'x')), whole) << split;
    }
}

TEST(Rc4, LeavesItsStateOnEmptyInput) {
    Rc4State state;
    rc4SetKey(state, "Key");
    const Rc4State before = state;
    EXPECT_EQ(rc4Process(state, ""), "");
    EXPECT_EQ(state.i, before.i);
    EXPECT_EQ(state.j, before.j);
    EXPECT_TRUE(std::equal(std::begin(state.s), std::end(state.s), std::begin(before.s)));
}

TEST(Rc4, StartsOverWithANewKey) {
    Rc4State state;
    rc4SetKey(state, "another key");
    rc4Process(state, ByteString(100, 'x'));
    rc4SetKey(state, "Key");
    EXPECT_EQ(toHex(rc4Process(state, "Plaintext")), "bbf316e8d940af0ad3");
}

TEST(Rc4, UsesALongKeyInFullAndNoMoreThan256BytesOfIt) {
    const ByteString key(256, 'k');
    const ByteString data(1000, 'd');
    EXPECT_NE(rc4(key.substr(0, 255) + 'l', data), rc4(key, data));
    EXPECT_EQ(rc4(key + "more", data), rc4(key, data));
}

TEST(Rc4, TakesAnEmptyKeyForOneZeroByte) {
    EXPECT_EQ(rc4("", "data"), rc4(ByteString(1, '\0'), "data"));
}

}  // namespace
}  // namespace velmora
