#pragma once

#include <cstddef>
#include <cstdint>

namespace velmora {

// The cipher suites, all with RSA key exchange (RFC 2246, A.5, and RFC 3268).

enum class CipherKind : uint8_t { kNone = 0, kRc4 = 1, kAes128Cbc = 2, kAes256Cbc = 3 };
enum class MacKind : uint8_t { kNone = 0, kMd5 = 1, kSha1 = 2 };

struct CipherSuite {
    uint16_t number = 0;
    CipherKind cipherKind = CipherKind::kNone;
    MacKind macKind = MacKind::kNone;
    size_t macBytes = 0;
    size_t keyBytes = 0;
    size_t ivBytes = 0;     // 0 for a stream cipher
    size_t blockBytes = 1;  // 1 for a stream cipher

    // Whether the suite is one of the four.
    bool IsKnown() const { return cipherKind != CipherKind::kNone; }
    // A block cipher in CBC mode: what it encrypts is padded to whole blocks.
    bool BlockMode() const { return blockBytes > 1; }

    bool operator==(const CipherSuite&) const = default;
};

inline constexpr CipherSuite kRsaWithRc4Md5 = {0x0004, CipherKind::kRc4, MacKind::kMd5, 16, 16, 0, 1};
inline constexpr CipherSuite kRsaWithRc4Sha = {0x0005, CipherKind::kRc4, MacKind::kSha1, 20, 16, 0, 1};
inline constexpr CipherSuite kRsaWithAes128Sha = {0x002F, CipherKind::kAes128Cbc, MacKind::kSha1, 20, 16, 16, 16};
inline constexpr CipherSuite kRsaWithAes256Sha = {0x0035, CipherKind::kAes256Cbc, MacKind::kSha1, 20, 32, 16, 16};

// In the order in which a client prefers them.
inline constexpr CipherSuite kCipherSuites[] = {kRsaWithAes128Sha, kRsaWithAes256Sha, kRsaWithRc4Md5, kRsaWithRc4Sha};

// The suite of this number. One that is not known has no cipher and no MAC.
constexpr CipherSuite FindCipherSuite(uint16_t number) {
    for (const CipherSuite& suite : kCipherSuites) {
        if (suite.number == number) return suite;
    }
    return {.number = number};
}

}  // namespace velmora
