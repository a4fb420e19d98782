// What long certificates and long chains may cost, in memory, stack and time, whatever they consist of.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "crypto/certificate.h"
#include "crypto/certificate_chain.h"
#include "crypto/sha1.h"
#include "crypto/trust_store.h"
#include "tests/crypto/certificate_files.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/support/counted_memory.h"
#include "tests/support/small_stack.h"

namespace velmora {
namespace {

TEST(LongChain, IsReadWithoutACopyOfIt) {
    std::vector<ByteString> certificates(20000, certificateFile("leaf"));
    CertificateChain chain;
    const size_t bytes = PeakBytes([&] { chain = CertificateChain(std::move(certificates), kSkipVerification); });
    EXPECT_EQ(chain.commonName, "pbx.velmora.example");
    EXPECT_LT(bytes, 4096U);
}

TEST(LongChain, IsVerifiedWithTheMemoryThatTwoCertificatesNeed) {
    trustStore.clear();
    trustCertificate(certificateFile("root"));
    CertificateChain chain;
    const auto verify = [&](size_t count) {
        std::vector<ByteString> certificates(count, certificateFile("root"));
        return PeakBytes([&] { chain = CertificateChain(std::move(certificates), ""); });
    };
    const size_t forTwo = verify(2);  // the second one is checked with the issuer's name already kept
    EXPECT_EQ(verify(1000), forTwo);
    EXPECT_EQ(chain.commonName, "Velmora Test Root");
    EXPECT_LT(forTwo, 65536U);
    trustStore.clear();
}

TEST(LongChain, MayConsistOfEmptyCertificates) {
    CertificateChain chain(std::vector<ByteString>(1000000), kSkipVerification);
    EXPECT_EQ(chain.certificates.size(), 1000000U);
    EXPECT_EQ(chain.modulus, "");
}

// Elements in elements, so many bytes in all or a few more.
ByteString nested(uint8_t tag, size_t bytes) {
    ByteString backwards;
    while (backwards.size() < bytes) {
        const ByteString header = derHeader(tag, backwards.size());
        backwards.append(header.rbegin(), header.rend());
    }
    return {backwards.rbegin(), backwards.rend()};
}

ByteString repeated(const ByteString& piece, size_t bytes) {
    ByteString pieces;
    while (pieces.size() < bytes) pieces += piece;
    return pieces;
}

ByteString withSubject(const ByteString& subject) {
    HandMadeCertificate parts;
    parts.subject = subject;
    return parts.der();
}

struct Shape {
    const char* name;
    ByteString (*certificate)(size_t bytes);
};

const Shape kShapes[] = {
    {"zero bytes", [](size_t bytes) { return ByteString(bytes, '\0'); }},
    {"zero bytes in a certificate", [](size_t bytes) { return derElement(0x30, ByteString(bytes, '\0')); }},
    {"bytes without an end", [](size_t bytes) { return repeated("\x30\x84\xFF\xFF", bytes); }},
    {"sequences in sequences", [](size_t bytes) { return nested(0x30, bytes); }},
    {"sequences side by side", [](size_t bytes) { return derElement(0x30, repeated("\x30\x01x", bytes)); }},
    {"sets in a name", [](size_t bytes) { return withSubject(nested(0x31, bytes)); }},
    {"common names", [](size_t bytes) { return withSubject(repeated(nameContent("x"), bytes)); }},
    {"empty sets", [](size_t bytes) { return withSubject(repeated(ByteString("\x31\0", 2), bytes)); }},
    {"zero bytes before each set",
     [](size_t bytes) { return withSubject(repeated(ByteString("\0\0\0\x31\0", 5), bytes)); }},
    {"a long common name", [](size_t bytes) { return withSubject(nameContent(ByteString(bytes, 'x'))); }},
    {"a long modulus",
     [](size_t bytes) {
         HandMadeCertificate parts;
         parts.modulus = ByteString(bytes, '\0') + ByteString(bytes, 'x');
         return parts.der();
     }},
};

// The shortest of several times: a busy machine makes some of them longer, none shorter.
double TimeMs(const std::function<void()>& action) {
    double shortestMs = 1e9;
    for (int run = 0; run < 5; ++run) {
        const auto start = std::chrono::steady_clock::now();
        action();
        const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
        shortestMs = std::min(shortestMs, time.count());
    }
    return shortestMs;
}

// The sanitizers check every access to memory and make everything some ten times slower.
#ifdef __SANITIZE_ADDRESS__
constexpr double kNoiseMs = 50;
#else
constexpr double kNoiseMs = 5;
#endif

constexpr size_t kShortBytes = 131072;
constexpr size_t kLongBytes = 16 * kShortBytes;

// Sixteen times the length: sixteen times the time if it grows with the length, 256 times if with its square.
void ExpectLinear(double shortMs, double longMs) {
    EXPECT_LT(longMs, 64 * shortMs + kNoiseMs);
}

TEST(LongCertificate, IsReadOnASmallStackInTimeThatGrowsWithItsLengthAlone) {
    for (const Shape& shape : kShapes) {
        SCOPED_TRACE(shape.name);
        const auto parseMs = [&](size_t bytes) {
            const ByteString der = shape.certificate(bytes);
            return TimeMs([&] { RunOnSmallStack([&] { parseCertificate(der); }); });
        };
        ExpectLinear(parseMs(kShortBytes), parseMs(kLongBytes));
    }
}

TEST(LongCertificate, IsReadWithoutMemory) {
    for (const Shape& shape : kShapes) {
        SCOPED_TRACE(shape.name);
        const ByteString der = shape.certificate(kLongBytes);
        EXPECT_EQ(PeakBytes([&] { parseCertificate(der); }), 0U);
    }
}

TEST(LongCertificate, IsCheckedInTimeThatGrowsWithTheLengthOfItsSignatureAlone) {
    trustStore.clear();
    HandMadeCertificate authority;
    authority.subject = nameContent("Issuer");
    authority.exponent = ByteString("\x01\x00\x01", 3);
    trustCertificate(authority.der());
    const auto verifyMs = [](size_t bytes) {
        HandMadeCertificate parts;
        parts.signature = ByteString(bytes, 'x');
        const ByteString der = parts.der();
        return TimeMs([&] { EXPECT_EQ(CertificateChain({der}, "").modulus, ""); });
    };
    ExpectLinear(verifyMs(kShortBytes), verifyMs(kLongBytes));
    trustStore.clear();
}

// A check with either would take seconds, and with longer ones hours.
TEST(LongKey, IsRefusedAtOnce) {
    trustStore.clear();
    HandMadeCertificate authority;
    authority.subject = nameContent("Issuer");
    trustCertificate(authority.der());
    HandMadeCertificate longModulus;
    longModulus.modulus = ByteString(100000, '\xFF');
    longModulus.exponent = ByteString("\x01\x00\x01", 3);
    HandMadeCertificate longExponent;
    longExponent.exponent = ByteString(1000000, '\xFF');
    for (HandMadeCertificate above : {longModulus, longExponent}) {
        above.signature = "\x01" + sha1Digest(above.tbs());
        HandMadeCertificate leaf;
        leaf.signature = ByteString(128, '\x55');
        const std::vector<ByteString> certificates = {leaf.der(), above.der()};
        EXPECT_LT(TimeMs([&] { EXPECT_EQ(CertificateChain(certificates, "").modulus, ""); }), 500);
    }
    trustStore.clear();
}

}  // namespace
}  // namespace velmora
