#include "tls/key_derivation.h"

#include <gtest/gtest.h>

#include "tests/support/hex.h"
#include "tls/protocol.h"

namespace velmora {
namespace {

// The bytes first, first + 1 and so on.
ByteString Counting(int first, size_t count) {
    ByteString bytes;
    while (bytes.size() < count) bytes += static_cast<char>(first++);
    return bytes;
}

const ByteString kPreMaster = Counting(0x00, 48);
const ByteString kClientRandom = Counting(0x40, 32);
const ByteString kServerRandom = Counting(0x80, 32);
const ByteString kMaster = Counting(0xA0, 48);

// Of the values above, worked out with Python's hashlib and hmac.
constexpr char kTlsMaster[] =
    "3b72140af74bdf7907992fc157473c645448f17cdefeb4bef081ba0f98ef826724af941cae89bb4da1fc7168c150455e";
constexpr char kSsl3Master[] =
    "54cd9a49df3061a01e7ce88eddb828253cfe3ae221e9cdfed8bf4f667f8a2096ae975f92a5f947a4d55d74df6310bc8a";
constexpr char kSsl3KeyBlock[] =
    "23405c4432d5f0728b31b7c55fecb76a5ef166cfe3143cdd22be260f265e8160b3086ebfe902e4848c66dd42e32b3aa778378f33981e5623"
    "5fe10e7d46023e74da3bb01c81f35bbad3898f5b2820c5b32d25fae974cee4347eebed87d9c10857a3c869dc1609a93e5883b4199bc5ea56"
    "d48e033f3cfa8cafad0cecbba391c5bade31fbb66aa4fcea97fa9d4b9327270f";

TEST(MasterSecret, IsThatOfTheValidationSystemInTls) {
    // NIST, "Application-Specific Key Derivation Function Validation System", the first case of its TLS 1.0/1.1
    // vectors.
    EXPECT_EQ(
        toHex(MasterSecret(
            kTls10,
            fromHex("bded7fa5c1699c010be23dd06ada3a48349f21e5f86263d512c0c5cc379f0e780ec55d9844b2f1db02a96453513568d0"),
            fromHex("e5acaf549cd25c22d964c0d930fa4b5261d2507fad84c33715b7b9a864020693"),
            fromHex("135e4d557fdf3aa6406d82975d5c606a9734c9334b42136e96990fbd5358cdb2"))),
        "2f6962dfbc744c4b2138bb6b3d33054c5ecc14f24851d9896395a44ab3964efc2090c5bf51a0891209f46c1e1e998f62");
}

TEST(MasterSecret, IsThePrfOfTheRandomsTheClientsFirstInTls) {
    EXPECT_EQ(toHex(MasterSecret(kTls10, kPreMaster, kClientRandom, kServerRandom)), kTlsMaster);
}

TEST(MasterSecret, IsThreeNestedDigestsInSsl3) {
    EXPECT_EQ(toHex(MasterSecret(kSsl30, kPreMaster, kClientRandom, kServerRandom)), kSsl3Master);
}

TEST(MasterSecret, TakesTheLast48BytesOfAWholeDecryptedBlock) {
    for (const ByteString& block : {ByteString("\x00\x02padding\x00", 10), ByteString(1, 'x'), ByteString(208, 'x')}) {
        EXPECT_EQ(toHex(MasterSecret(kTls10, block + kPreMaster, kClientRandom, kServerRandom)), kTlsMaster);
        EXPECT_EQ(toHex(MasterSecret(kSsl30, block + kPreMaster, kClientRandom, kServerRandom)), kSsl3Master);
    }
}

TEST(MasterSecret, TakesASecretOfFewerThan48BytesAsItIs) {
    for (const size_t count : {0U, 1U, 47U}) {
        const ByteString secret = kPreMaster.substr(0, count);
        const ByteString master = MasterSecret(kTls10, secret, kClientRandom, kServerRandom);
        EXPECT_EQ(master.size(), 48U);
        EXPECT_NE(toHex(master), kTlsMaster);
        EXPECT_EQ(MasterSecret(kSsl30, secret, kClientRandom, kServerRandom).size(), 48U);
    }
}

TEST(KeyBlock, IsThatOfTheValidationSystemInTls) {
    // As above.
    const ByteString master =
        fromHex("2f6962dfbc744c4b2138bb6b3d33054c5ecc14f24851d9896395a44ab3964efc2090c5bf51a0891209f46c1e1e998f62");
    const ByteString serverRandom = fromHex("67267e650eb32444119d222a368c191af3082888dc35afe8368e638c828874be");
    const ByteString clientRandom = fromHex("d58a7b1cd4fedaa232159df652ce188f9d997e061b9bf48e83b62990440931f6");
    EXPECT_EQ(
        toHex(KeyBlock(kTls10, master, clientRandom, serverRandom, 104)),
        "3088825988e77fce68d19f756e18e43eb7fe672433504feaf99b3c503d9091b164f166db301d70c9fc0870b4a94563907bee1a61"
        "fb786cb717576890bcc51cb9ead97e01d0a2fea99c953377b195205ff07b369589178796edc963fd80fdbe518a2fc1c35c18ae8d");
}

TEST(KeyBlock, HasExactlyTheLengthAskedForInTls) {
    const ByteString longest = KeyBlock(kTls10, kMaster, kClientRandom, kServerRandom, 136);
    for (const size_t length : {0U, 1U, 64U, 72U, 104U, 136U}) {
        EXPECT_EQ(KeyBlock(kTls10, kMaster, kClientRandom, kServerRandom, length), longest.substr(0, length));
    }
}

TEST(KeyBlock, IsNestedDigestsOfTheRandomsTheServersFirstInSsl3) {
    EXPECT_EQ(toHex(KeyBlock(kSsl30, kMaster, kClientRandom, kServerRandom, 144)), kSsl3KeyBlock);
}

TEST(KeyBlock, HasFiveRoundsForTheRc4SuitesOfSsl3ThoughTheyNeedFewer) {
    const ByteString whole = fromHex(kSsl3KeyBlock);
    for (const size_t length : {0U, 1U, 64U, 72U, 80U}) {
        EXPECT_EQ(KeyBlock(kSsl30, kMaster, kClientRandom, kServerRandom, length), whole.substr(0, 80)) << length;
    }
}

TEST(KeyBlock, GoesOnWithFurtherSaltsForTheAesSuitesOfSsl3) {
    const ByteString whole = fromHex(kSsl3KeyBlock);
    for (const auto& [length, bytes] : {std::pair(81U, 96U), {96U, 96U}, {97U, 112U}, {104U, 112U}, {136U, 144U}}) {
        EXPECT_EQ(KeyBlock(kSsl30, kMaster, kClientRandom, kServerRandom, length), whole.substr(0, bytes)) << length;
    }
}

Transcript ShortTranscript() {
    Transcript transcript;
    transcript.Append("the messages ");
    transcript.Append("of a handshake");
    return transcript;
}

TEST(VerifyData, IsThePrfOfBothDigestsUnderTheSendersLabelInTls) {
    const Transcript transcript = ShortTranscript();
    EXPECT_EQ(toHex(VerifyData(kTls10, kMaster, Endpoint::kClient, transcript)), "49c8b9e533c3b2da678282a7");
    EXPECT_EQ(toHex(VerifyData(kTls10, kMaster, Endpoint::kServer, transcript)), "c9781259c752dc08a1a3ea4a");
}

TEST(VerifyData, IsAnMd5HalfAndASha1HalfWithTheSendersNameInSsl3) {
    const Transcript transcript = ShortTranscript();
    EXPECT_EQ(toHex(VerifyData(kSsl30, kMaster, Endpoint::kClient, transcript)),
              "887d08d2b46249733783c20944f392be"
              "effba4f66fe33bacf472e3101ff5eeaadd8a2358");
    EXPECT_EQ(toHex(VerifyData(kSsl30, kMaster, Endpoint::kServer, transcript)),
              "985a7732d0ca0066350d56b9fef580e6"
              "aa414803533b29c40d4b097c05f80b0764fb2376");
}

TEST(VerifyData, LeavesTheTranscriptAsItIs) {
    const Transcript transcript = ShortTranscript();
    const ByteString before = transcript.md5.digest() + transcript.sha1.digest();
    VerifyData(kTls10, kMaster, Endpoint::kClient, transcript);
    VerifyData(kSsl30, kMaster, Endpoint::kClient, transcript);
    EXPECT_EQ(transcript.md5.digest() + transcript.sha1.digest(), before);
}

}  // namespace
}  // namespace velmora
