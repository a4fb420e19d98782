#include "crypto/rsa_private_key.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "config/settings.h"
#include "tests/support/hex.h"
#include "tests/support/log_file_fake.h"

namespace velmora {
namespace {

// One element with a length of one byte.
ByteString element(const ByteString& tag, const ByteString& contentDigits) {
    return tag + toHex(ByteString(1, static_cast<char>(contentDigits.size() / 2))) + contentDigits;
}

ByteString integer(const ByteString& contentDigits) {
    return element("02", contentDigits);
}

// A key of small numbers, in hexadecimal, without the three that are not read.
ByteString keyDigits(const ByteString& version) {
    return element("30", integer(version) + integer("00c5") + integer("010001") + integer("1122") + integer("33") +
                             integer("0044"));
}

// Names what is wrong with the other tests of the numbers: all of them are empty.
bool isEmpty(const RsaPrivateKeyNumbers& numbers) {
    return (numbers.modulus + numbers.publicExponent + numbers.privateExponent + numbers.prime1 + numbers.prime2)
        .empty();
}

class ReadRsaPrivateKey : public testing::Test {
protected:
    void SetUp() override {
        settings = {};
        settings.logfile = "trace.log";
        settings.loglevel = 5;
        settings.loglength = 1000000;
    }

    // The numbers, and what was logged meanwhile.
    RsaPrivateKeyNumbers read(const ByteString& digits) {
        const size_t before = WrittenLog().size();
        RsaPrivateKeyNumbers numbers = readRsaPrivateKey(fromHex(digits));
        logged = WrittenLog().substr(before);
        return numbers;
    }

    void expectUnreadable(const ByteString& digits) {
        EXPECT_TRUE(isEmpty(read(digits)));
        EXPECT_TRUE(logged.ends_with(":5 Cannot read private RSA key\r\n")) << logged;
    }

    ByteString logged;
};

TEST_F(ReadRsaPrivateKey, GivesTheFiveNumbersAsTheyStandThere) {
    const RsaPrivateKeyNumbers numbers = read(keyDigits("00"));
    EXPECT_EQ(toHex(numbers.modulus), "00c5");
    EXPECT_EQ(toHex(numbers.publicExponent), "010001");
    EXPECT_EQ(toHex(numbers.privateExponent), "1122");
    EXPECT_EQ(toHex(numbers.prime1), "33");
    EXPECT_EQ(toHex(numbers.prime2), "0044");
    EXPECT_EQ(logged, "");
}

TEST_F(ReadRsaPrivateKey, DoesNotLookAtWhatFollows) {
    const ByteString content = keyDigits("00").substr(4);
    EXPECT_EQ(toHex(read(element("30", content + "ffffffff")).prime2), "0044");
    EXPECT_EQ(toHex(read(element("30", content) + "ffffffff").prime2), "0044");
    EXPECT_EQ(logged, "");
}

TEST_F(ReadRsaPrivateKey, TakesAVersionOfZeroInAnyLength) {
    EXPECT_EQ(toHex(read(keyDigits("0000")).modulus), "00c5");
}

TEST_F(ReadRsaPrivateKey, RefusesEveryOtherVersion) {
    for (const char* version : {"01", "02", "ff", "0001", "0100", ""}) {
        SCOPED_TRACE(version);
        expectUnreadable(keyDigits(version));
    }
}

TEST_F(ReadRsaPrivateKey, SaysNothingAboutFewerThanTenBytes) {
    for (size_t bytes = 0; bytes < 10; ++bytes) {
        SCOPED_TRACE(bytes);
        EXPECT_TRUE(isEmpty(read(keyDigits("00").substr(0, 2 * bytes))));
        EXPECT_EQ(logged, "");
    }
}

TEST_F(ReadRsaPrivateKey, RefusesAKeyThatIsCutOffAnywhere) {
    const ByteString whole = keyDigits("00");
    for (size_t bytes = 10; bytes < whole.size() / 2; ++bytes) {
        SCOPED_TRACE(bytes);
        expectUnreadable(whole.substr(0, 2 * bytes));
    }
}

TEST_F(ReadRsaPrivateKey, RefusesAKeyWithoutOneOfItsNumbers) {
    const ByteString integers[] = {integer("00"), integer("c5"), integer("03"),
                                   integer("11"), integer("33"), integer("44")};
    for (size_t missing = 0; missing < std::size(integers); ++missing) {
        SCOPED_TRACE(missing);
        ByteString content;
        for (size_t index = 0; index < std::size(integers); ++index) content += index == missing ? "" : integers[index];
        expectUnreadable(element("30", content));
    }
}

// Whatever one byte is changed to, either every number is there or none is.
TEST_F(ReadRsaPrivateKey, GivesAllNumbersOrNoneWhateverByteIsChanged) {
    const ByteString whole = fromHex(keyDigits("00"));
    for (size_t position = 0; position < whole.size(); ++position) {
        for (int value = 0; value < 256; ++value) {
            ByteString changed = whole;
            changed[position] = static_cast<char>(value);
            const RsaPrivateKeyNumbers numbers = readRsaPrivateKey(changed);
            const bool complete = !numbers.modulus.empty() && !numbers.publicExponent.empty() &&
                                  !numbers.privateExponent.empty() && !numbers.prime1.empty() &&
                                  !numbers.prime2.empty();
            ASSERT_TRUE(complete || isEmpty(numbers)) << position << " " << value;
        }
    }
}

}  // namespace
}  // namespace velmora
