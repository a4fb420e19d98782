#include "tls/record_protection.h"

#include <gtest/gtest.h>

#include "crypto/hmac.h"
#include "tests/support/hex.h"
#include "tests/support/seeded_bytes.h"
#include "tls/wire.h"

namespace velmora {
namespace {

constexpr RecordType kType = RecordType::kApplicationData;

DirectionKeys AnyKeys(const CipherSuite& suite) {
    SeededBytes random(suite.number);
    return {random.take(suite.macBytes), random.take(suite.keyBytes), random.take(suite.ivBytes)};
}

// The other end of a direction, put together here from cipher and HMAC alone: content, MAC and padding stand apart.
class OtherEnd {
public:
    explicit OtherEnd(const CipherSuite& cipherSuite) : suite(cipherSuite), keys(AnyKeys(cipherSuite)) {
        if (suite.BlockMode()) {
            encryption.setKeySize(static_cast<int>(suite.keyBytes) * 8, kAesCbc);
            decryption.setKeySize(static_cast<int>(suite.keyBytes) * 8, kAesCbc);
            encryption.initEncrypt(keys.key, keys.iv);
            decryption.initDecrypt(keys.key, keys.iv);
        } else {
            rc4SetKey(rc4, keys.key);
        }
    }

    ByteString Mac(uint64_t sequence, std::string_view content) const {
        WireWriter input;
        input.Bytes(ByteString(7, '\0')).U8(sequence).U8(23).U8(3).U8(1).Bytes16(content);
        return suite.macKind == MacKind::kMd5 ? hmacMd5(keys.macSecret, input.Written())
                                              : hmacSha1(keys.macSecret, input.Written());
    }

    ByteString Encrypt(const ByteString& plaintext) {
        return suite.BlockMode() ? encryption.encrypt(plaintext) : rc4Process(rc4, plaintext);
    }

    ByteString Decrypt(const ByteString& fragment) {
        return suite.BlockMode() ? decryption.decrypt(fragment) : rc4Process(rc4, fragment);
    }

private:
    CipherSuite suite;
    DirectionKeys keys;
    Rc4State rc4;
    AesCipher encryption;
    AesCipher decryption;
};

RecordProtection Sender(const CipherSuite& suite) {
    return RecordProtection::ForSending(suite, AnyKeys(suite));
}

RecordProtection Receiver(const CipherSuite& suite) {
    return RecordProtection::ForReceiving(suite, AnyKeys(suite));
}

// count bytes of padding and the byte that counts them.
ByteString Padding(size_t count) {
    return ByteString(count + 1, static_cast<char>(count));
}

// What a receiver makes of the first record, of this plaintext.
std::optional<ByteString> Received(const CipherSuite& suite, const ByteString& plaintext) {
    return Receiver(suite).Unprotect(kType, kTls10, OtherEnd(suite).Encrypt(plaintext));
}

TEST(RecordProtection, WithoutKeysGivesBackWhatGoesIn) {
    for (RecordProtection protection : {RecordProtection(), Sender(FindCipherSuite(0x000A))}) {
        for (const ByteString& content : {ByteString("content"), ByteString(), ByteString(40, '\0')}) {
            EXPECT_EQ(protection.Protect(kType, kTls10, content), content);
            EXPECT_EQ(protection.Unprotect(kType, kTls10, content), content);
        }
    }
}

TEST(RecordProtection, PutsTheMacBehindTheContentUnderAStreamCipher) {
    for (const CipherSuite& suite : {kRsaWithRc4Md5, kRsaWithRc4Sha}) {
        RecordProtection sender = Sender(suite);
        OtherEnd otherEnd(suite);
        for (uint64_t sequence = 0; sequence < 50; ++sequence) {
            const ByteString content(sequence, 'c');
            EXPECT_EQ(otherEnd.Decrypt(sender.Protect(kType, kTls10, content)),
                      content + otherEnd.Mac(sequence, content));
        }
    }
}

TEST(RecordProtection, PadsToTheNextWholeBlockAndNoFurther) {
    for (const CipherSuite& suite : {kRsaWithAes128Sha, kRsaWithAes256Sha}) {
        RecordProtection sender = Sender(suite);
        OtherEnd otherEnd(suite);
        for (uint64_t sequence = 0; sequence < 100; ++sequence) {
            const ByteString content(sequence, 'c');
            const ByteString fragment = sender.Protect(kType, kTls10, content);
            const size_t padding = 15 - (sequence + 20) % 16;
            EXPECT_EQ(fragment.size(), sequence + 20 + padding + 1);
            EXPECT_EQ(otherEnd.Decrypt(fragment), content + otherEnd.Mac(sequence, content) + Padding(padding));
        }
    }
}

TEST(RecordProtection, Makes48BytesOf12UnderAesWithSha1) {
    OtherEnd otherEnd(kRsaWithAes128Sha);
    const ByteString fragment = Sender(kRsaWithAes128Sha).Protect(kType, kTls10, "twelve bytes");
    ASSERT_EQ(fragment.size(), 48U);
    EXPECT_EQ(toHex(otherEnd.Decrypt(fragment).substr(32)), "0f0f0f0f0f0f0f0f0f0f0f0f0f0f0f0f");
}

TEST(RecordProtection, TakesRecordsOneBehindTheOther) {
    for (const CipherSuite& suite : kCipherSuites) {
        SCOPED_TRACE(suite.number);
        RecordProtection sender = Sender(suite);
        RecordProtection receiver = Receiver(suite);
        SeededBytes random(1);
        for (int record = 0; record < 400; ++record) {
            const ByteString content = random.take(random.upTo(100));
            ASSERT_EQ(receiver.Unprotect(kType, kTls10, sender.Protect(kType, kTls10, content)), content) << record;
        }
    }
}

TEST(RecordProtection, RefusesARecordThatComesTwiceOrOutOfItsTurn) {
    for (const CipherSuite& suite : kCipherSuites) {
        SCOPED_TRACE(suite.number);
        RecordProtection sender = Sender(suite);
        const ByteString first = sender.Protect(kType, kTls10, "first");
        const ByteString second = sender.Protect(kType, kTls10, "second");
        EXPECT_FALSE(Receiver(suite).Unprotect(kType, kTls10, second));
        RecordProtection receiver = Receiver(suite);
        EXPECT_EQ(receiver.Unprotect(kType, kTls10, first), "first");
        EXPECT_FALSE(receiver.Unprotect(kType, kTls10, first));
    }
}

TEST(RecordProtection, CountsRecordsBeyondOneByte) {
    OtherEnd otherEnd(kRsaWithRc4Sha);
    RecordProtection receiver = Receiver(kRsaWithRc4Sha);
    for (uint64_t sequence = 0; sequence < 256; ++sequence) {
        const ByteString plaintext = "c" + otherEnd.Mac(sequence, "c");
        ASSERT_EQ(receiver.Unprotect(kType, kTls10, otherEnd.Encrypt(plaintext)), "c") << sequence;
    }
    EXPECT_FALSE(receiver.Unprotect(kType, kTls10, otherEnd.Encrypt("c" + otherEnd.Mac(0, "c"))));
}

TEST(RecordProtection, RefusesARecordUnderAnotherTypeOrVersion) {
    for (const CipherSuite& suite : kCipherSuites) {
        SCOPED_TRACE(suite.number);
        const ByteString fragment = Sender(suite).Protect(kType, kTls10, "content");
        EXPECT_FALSE(Receiver(suite).Unprotect(RecordType::kHandshake, kTls10, fragment));
        EXPECT_FALSE(Receiver(suite).Unprotect(kType, kSsl30, fragment));
        EXPECT_EQ(Receiver(suite).Unprotect(kType, kTls10, fragment), "content");
    }
}

TEST(RecordProtection, RefusesARecordWithAnyBitOfContentOrMacChanged) {
    for (const CipherSuite& suite : kCipherSuites) {
        SCOPED_TRACE(suite.number);
        const ByteString fragment = Sender(suite).Protect(kType, kTls10, "twelve bytes");
        for (size_t index = 0; index < 12 + suite.macBytes; ++index) {
            for (unsigned int bit = 0; bit < 8; ++bit) {
                ByteString changed = fragment;
                changed[index] = static_cast<char>(static_cast<unsigned char>(changed[index]) ^ (1U << bit));
                ASSERT_FALSE(Receiver(suite).Unprotect(kType, kTls10, changed)) << index << " " << bit;
            }
        }
    }
}

TEST(RecordProtection, TakesARecordWithoutContent) {
    for (const CipherSuite& suite : kCipherSuites) {
        EXPECT_EQ(Receiver(suite).Unprotect(kType, kTls10, Sender(suite).Protect(kType, kTls10, "")), "");
    }
}

TEST(RecordProtection, RefusesARecordOfEveryLengthTooShortForItsMac) {
    for (const CipherSuite& suite : kCipherSuites) {
        for (size_t count = 0; count < suite.macBytes; ++count) {
            EXPECT_FALSE(Receiver(suite).Unprotect(kType, kTls10, ByteString(count, 'x'))) << count;
        }
    }
}

TEST(RecordProtection, RefusesARecordWhosePaddingLeavesTooLittleForItsMac) {
    for (size_t padding = 12; padding <= 31; ++padding) {
        EXPECT_FALSE(Received(kRsaWithAes128Sha, ByteString(31 - padding, 'x') + Padding(padding))) << padding;
    }
}

TEST(RecordProtection, TakesMorePaddingThanIsNeeded) {
    const ByteString macked = "twelve bytes" + OtherEnd(kRsaWithAes256Sha).Mac(0, "twelve bytes");
    for (size_t padding = 15; padding <= 255; padding += 16) {
        EXPECT_EQ(Received(kRsaWithAes256Sha, macked + Padding(padding)), "twelve bytes") << padding;
    }
}

TEST(RecordProtection, LooksAtTheLastByteOfThePaddingAlone) {
    const ByteString macked = "twelve bytes" + OtherEnd(kRsaWithAes128Sha).Mac(0, "twelve bytes");
    EXPECT_EQ(Received(kRsaWithAes128Sha, macked + "anything at all\x0F"), "twelve bytes");
    EXPECT_EQ(Received(kRsaWithAes128Sha, macked + ByteString(15, '\0') + '\x0F'), "twelve bytes");
}

// A content of 12 bytes whose MAC ends in this byte.
ByteString ContentWithMacEndingIn(unsigned char last) {
    for (int number = 0;; ++number) {
        const ByteString digits = std::to_string(number);
        const ByteString content = ByteString(12 - digits.size(), ' ') + digits;
        if (static_cast<unsigned char>(OtherEnd(kRsaWithAes128Sha).Mac(0, content).back()) == last) return content;
    }
}

// The body has 32 bytes, of which the last one is the MAC's.
TEST(RecordProtection, TakesABodyWholeThatCountsMorePaddingThanThereIs) {
    for (const int last : {32, 33, 128, 255}) {
        const ByteString content = ContentWithMacEndingIn(static_cast<unsigned char>(last));
        EXPECT_EQ(Received(kRsaWithAes128Sha, content + OtherEnd(kRsaWithAes128Sha).Mac(0, content)), content) << last;
    }
    for (const int last : {0, 1, 30, 31}) {
        const ByteString content = ContentWithMacEndingIn(static_cast<unsigned char>(last));
        EXPECT_FALSE(Received(kRsaWithAes128Sha, content + OtherEnd(kRsaWithAes128Sha).Mac(0, content))) << last;
    }
}

TEST(RecordProtection, DropsWhatStandsBehindTheLastWholeBlock) {
    const ByteString fragment = Sender(kRsaWithAes128Sha).Protect(kType, kTls10, "twelve bytes");
    EXPECT_EQ(Receiver(kRsaWithAes128Sha).Unprotect(kType, kTls10, fragment + "behind"), "twelve bytes");
    EXPECT_FALSE(Receiver(kRsaWithAes128Sha).Unprotect(kType, kTls10, fragment.substr(0, 31)));
}

}  // namespace
}  // namespace velmora
