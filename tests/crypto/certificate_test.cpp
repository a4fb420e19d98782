#include "crypto/certificate.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/crypto/certificate_files.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/support/logged.h"

namespace velmora {
namespace {

using namespace std::string_literals;

constexpr uint8_t kUtf8String = 12;
constexpr uint8_t kPrintableString = 19;
constexpr uint8_t kT61String = 20;
constexpr uint8_t kIa5String = 22;
constexpr uint8_t kUniversalString = 28;
constexpr uint8_t kBmpString = 30;

TEST(CommonName, IsAUtf8StringAPrintableStringOrAT61String) {
    for (const uint8_t type : {kUtf8String, kPrintableString, kT61String}) {
        SCOPED_TRACE(int{type});
        EXPECT_EQ(commonName(nameAttribute(kCommonNameType, type, "pbx.example")), "pbx.example");
    }
}

TEST(CommonName, IsEmptyWhenTheOnlyOneIsABmpString) {
    for (const uint8_t type : {kBmpString, kIa5String, kUniversalString}) {
        SCOPED_TRACE(int{type});
        EXPECT_EQ(commonName(nameAttribute(kCommonNameType, type, "pbx.example")), "");
    }
}

TEST(CommonName, IsTheLastOfSeveral) {
    const ByteString organization = nameAttribute(kOrganizationType, kUtf8String, "Velmora");
    EXPECT_EQ(commonName(nameContent("first") + organization + nameContent("second") + organization), "second");
    EXPECT_EQ(commonName(nameContent("first") + nameContent("")), "");
    EXPECT_EQ(commonName(nameContent("first") + nameAttribute(kCommonNameType, kBmpString, "second")), "first");
}

TEST(CommonName, IsTheAttributeWithExactlyTheThreeBytesOfItsIdentifier) {
    for (const char* type : {"", "\x55", "\x55\x04", "\x55\x04\x0A", "\x55\x04\x03\x01", "\x54\x04\x03"}) {
        EXPECT_EQ(commonName(nameAttribute(type, kUtf8String, "x")), "");
    }
}

TEST(CommonName, IsNotSeenInTheSecondPlaceOfASet) {
    const ByteString common = derElement(0x30, derElement(0x06, kCommonNameType) + derElement(kUtf8String, "x"));
    const ByteString country = derElement(0x30, derElement(0x06, "\x55\x04\x06") + derElement(kPrintableString, "DE"));
    EXPECT_EQ(commonName(derElement(0x31, common + country)), "x");
    EXPECT_EQ(commonName(derElement(0x31, country + common)), "");
}

TEST(CommonName, IsFoundBehindAnEmptySetAndBehindZeroBytes) {
    EXPECT_EQ(commonName(derElement(0x31, "") + nameContent("x")), "x");
    EXPECT_EQ(commonName(ByteString(5, '\0') + nameContent("x")), "x");
    EXPECT_EQ(commonName(nameContent("x") + ByteString(1, '\0') + nameContent("y") + ByteString(3, '\0')), "y");
}

TEST(CommonName, IsNotLookedForBehindAnythingButASet) {
    EXPECT_EQ(commonName(nameContent("x") + derElement(0x30, "") + nameContent("y")), "x");
    EXPECT_EQ(commonName(derElement(0x30, nameContent("y"))), "");
}

TEST(CommonName, IsEmptyForNothing) {
    EXPECT_EQ(commonName(""), "");
    EXPECT_EQ(commonName("\x31"), "");
    EXPECT_EQ(commonName(derElement(0x31, derElement(0x30, derElement(0x06, kCommonNameType)))), "");
}

TEST(ParseCertificate, ReadsTheNamesThatOpenSslWrites) {
    struct NameFile {
        const char* file;
        const char* commonName;
    };
    const NameFile files[] = {
        {"leaf", "pbx.velmora.example"},
        {"utf8_name", "K\xC3\xB6ln"},
        {"printable_name", "Cologne"},
        {"t61_name", "K\xF6ln"},
        {"bmp_name", ""},
        {"two_names", "second.velmora.example"},
        {"no_name", ""},
        {"first_in_set", "pbx"},
        {"second_in_set", ""},
        {"version1", "version1.velmora.example"},
    };
    for (const NameFile& file : files) {
        SCOPED_TRACE(file.file);
        const ByteString der = certificateFile(file.file);
        EXPECT_EQ(parseCertificate(der).commonName, file.commonName);
    }
}

TEST(ParseCertificate, ReadsTheKeysThatOpenSslWrites) {
    struct KeyFile {
        const char* file;
        size_t modulusBytes;
        ByteString exponent;
    };
    const KeyFile files[] = {
        {"root", 128, "\x01\x00\x01"s},
        {"upper", 256, "\x01\x00\x01"s},
        {"large_root", 512, "\x01\x00\x01"s},
        {"exponent3", 128, "\x03"},
        {"long_exponent", 128, "\x01\x00\x00\x00\x01"s},
        {"version1", 128, "\x01\x00\x01"s},
        {"elliptic", 0, ""},
    };
    for (const KeyFile& file : files) {
        SCOPED_TRACE(file.file);
        const ByteString der = certificateFile(file.file);
        EXPECT_EQ(parseCertificate(der).modulus.size(), file.modulusBytes);
        EXPECT_EQ(parseCertificate(der).exponent, file.exponent);
    }
}

TEST(ParseCertificate, ReadsEveryPart) {
    HandMadeCertificate parts;
    parts.issuer = nameContent("issuer") + nameAttribute(kOrganizationType, kUtf8String, "Velmora");
    parts.subject = nameContent("subject");
    parts.modulus = "modulus";
    parts.exponent = "exponent";
    parts.algorithm = "algorithm";
    parts.signature = "signature";
    const ByteString der = parts.der();
    const Certificate certificate = parseCertificate(der);
    EXPECT_EQ(certificate.signedBytes, parts.tbs());
    EXPECT_EQ(certificate.issuer, parts.issuer);
    EXPECT_EQ(certificate.subject, parts.subject);
    EXPECT_EQ(certificate.commonName, "subject");
    EXPECT_EQ(certificate.modulus, "modulus");
    EXPECT_EQ(certificate.exponent, "exponent");
    EXPECT_EQ(certificate.signatureAlgorithm, "algorithm");
    EXPECT_EQ(certificate.signature, "signature");
}

TEST(ParseCertificate, ReadsVersion1WhichHasNoVersionNumber) {
    HandMadeCertificate parts;
    parts.version = "";
    const ByteString der = parts.der();
    EXPECT_EQ(parseCertificate(der).issuer, parts.issuer);
    EXPECT_EQ(parseCertificate(der).subject, parts.subject);
    EXPECT_EQ(parseCertificate(der).signedBytes, parts.tbs());
}

TEST(ParseCertificate, RemovesEveryZeroByteFromTheStartOfANumber) {
    HandMadeCertificate parts;
    parts.modulus = "\0\0\0modulus\0"s;
    parts.exponent = "\0\0"s;
    parts.unusedBits = "\0\0\0"s;
    parts.signature = "signature\0"s;
    const ByteString der = parts.der();
    EXPECT_EQ(parseCertificate(der).modulus, "modulus\0"s);
    EXPECT_EQ(parseCertificate(der).exponent, "");
    EXPECT_EQ(parseCertificate(der).signature, "signature\0"s);
}

TEST(ParseCertificate, KeepsAnUnusedBitsByteThatIsNotZero) {
    HandMadeCertificate parts;
    parts.unusedBits = "\x03";
    EXPECT_EQ(parseCertificate(parts.der()).signature.size(), 1 + parts.signature.size());
}

TEST(ParseCertificate, TakesTheSignedBytesAsTheyStand) {
    HandMadeCertificate parts;
    parts.modulus = ByteString(256, '\x7F');
    ASSERT_EQ(parts.tbs().substr(0, 2), "\x30\x82");  // two length bytes follow
    const ByteString lengthAndContent = parts.tbs().substr(2);
    const ByteString rest = parts.der().substr(4 + parts.tbs().size());
    // 15 length bytes, and a length byte of which only the low four bits count.
    for (const ByteString& start : {"\x30\x8F"s.append(13, '\0'), "\x30\xF2"s}) {
        const ByteString tbs = start + lengthAndContent;
        // The zero bytes in front belong to no element.
        const ByteString der = derElement(0x30, "\0\0\0"s.append(tbs).append(rest));
        EXPECT_EQ(parseCertificate(der).signedBytes, tbs);
        EXPECT_EQ(parseCertificate(der).subject, parts.subject);
        EXPECT_EQ(parseCertificate(der).signature, parts.signature);
    }
}

TEST(ParseCertificate, ReadsALengthByteOf0x90AsLengthZero) {
    const HandMadeCertificate parts;
    const ByteString der = derElement(0x30, "\x30\x90" + parts.der().substr(4 + parts.tbs().size()));
    EXPECT_EQ(parseCertificate(der).signedBytes, "\x30\x90");
    EXPECT_EQ(parseCertificate(der).subject, "");
    EXPECT_EQ(parseCertificate(der).signature, parts.signature);
}

TEST(ParseCertificate, ReadsWhatIsMissingAsEmpty) {
    const Certificate nothing = parseCertificate("");
    for (const std::string_view part :
         {nothing.signedBytes, nothing.issuer, nothing.subject, nothing.commonName, nothing.modulus, nothing.exponent,
          nothing.signatureAlgorithm, nothing.signature}) {
        EXPECT_EQ(part, "");
    }
    EXPECT_EQ(parseCertificate(derElement(0x31, "x")).signedBytes, "");
    EXPECT_EQ(parseCertificate(derElement(0x30, derElement(0x30, ""))).signedBytes, "\x30\0"s);
    EXPECT_EQ(parseCertificate(ByteString(1000, '\0')).signedBytes, "");
    EXPECT_EQ(parseCertificate(derElement(0x30, ByteString(1000, '\0'))).signedBytes, "");
}

TEST(ParseCertificate, LogsTheCommonNameInHexadecimalAtLevel9) {
    const ByteString der = certificateFile("utf8_name");
    const auto parse = [&] { parseCertificate(der); };
    EXPECT_EQ(Logged(9, parse), (std::vector<ByteString>{"9 domain1=4bc3b66c6e"}));
    EXPECT_EQ(Logged(8, parse), (std::vector<ByteString>{}));
    EXPECT_EQ(Logged(9, [] { parseCertificate(""); }), (std::vector<ByteString>{"9 domain1="}));
}

}  // namespace
}  // namespace velmora
