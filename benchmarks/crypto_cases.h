#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "benchmarks/ratio_table.h"
#include "benchmarks/same_result.h"
#include "benchmarks/unsigned_bytes.h"
#include "config/byte_string.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"

namespace velmora {

// The cases of crypto_bench. A library takes part as a type of its own with the name kName and a function for each unit
// that it can do (see AddCryptoContender). The function makes ready what may be made beforehand, contexts and key
// schedules, each with the least detour that the library offers, and gives the work: a callable that does it once and
// gives the result, whatever holds bytes. What is compared is the work on the bytes. Ours includes the string that it
// returns.

// Bytes without a pattern that anything could profit from, the same for everybody. They stay where they are.
const ByteString& SomeBytes(size_t count);

inline constexpr size_t kAesIvBytes = 16;
inline constexpr size_t kRc4KeyBytes = 16;

// The key block of the suite AES-128 with SHA-1.
inline constexpr size_t kPrfSecretBytes = 48;
inline constexpr size_t kPrfSeedBytes = 64;
inline constexpr size_t kPrfBytes = 104;
inline const ByteString kPrfLabel = "key expansion";

template <typename Library, typename Work>
void AddCryptoWork(const std::string& unit, size_t byteCount, Work work) {
    const std::string caseName = std::to_string(byteCount);
    auto first = work();
    RequireTheSame(unit, caseName, Library::kName, {reinterpret_cast<const char*>(std::data(first)), std::size(first)});
    AddContender(unit, caseName, Library::kName, [work]() mutable {
        auto result = work();
        benchmark::DoNotOptimize(result);
    });
}

template <typename Library>
void AddDigests() {
    for (const size_t count : {64U, 1024U, 16384U, 1048576U}) {
        AddCryptoWork<Library>("md5", count, Library::Md5(SomeBytes(count)));
        AddCryptoWork<Library>("sha1", count, Library::Sha1(SomeBytes(count)));
    }
    // A record with its 13 bytes of sequence number and header, under a MAC secret of the hash's own length.
    for (const size_t count : {413U, 16397U}) {
        AddCryptoWork<Library>("hmac-md5", count, Library::HmacMd5(SomeBytes(kMd5Bytes), SomeBytes(count)));
        AddCryptoWork<Library>("hmac-sha1", count, Library::HmacSha1(SomeBytes(kSha1Bytes), SomeBytes(count)));
    }
}

template <typename Library>
void AddCiphers() {
    // One stream from call to call, as the records of a connection make it.
    for (const size_t count : {448U, 16384U}) {
        const ByteString& data = SomeBytes(count);
        for (const int keyBits : {128, 256}) {
            const ByteString& key = SomeBytes(static_cast<size_t>(keyBits) / 8);
            const std::string unit = "aes" + std::to_string(keyBits) + "-cbc-";
            AddCryptoWork<Library>(unit + "enc", count, Library::AesCbcEncrypt(key, SomeBytes(kAesIvBytes), data));
            AddCryptoWork<Library>(unit + "dec", count, Library::AesCbcDecrypt(key, SomeBytes(kAesIvBytes), data));
        }
        if constexpr (requires { &Library::Rc4; }) {
            AddCryptoWork<Library>("rc4", count, Library::Rc4(SomeBytes(kRc4KeyBytes), data));
        }
    }
}

// Enters the library for every case that it can do: all, but for the pseudo-random function and RC4, which not every
// library has.
template <typename Library>
void AddCryptoContender() {
    AddDigests<Library>();
    if constexpr (requires { &Library::Prf; }) {
        AddCryptoWork<Library>("prf", kPrfBytes, Library::Prf(SomeBytes(kPrfSecretBytes), SomeBytes(kPrfSeedBytes)));
    }
    AddCiphers<Library>();
}

// The contenders, each in a source of its own.
void AddOurCrypto();
void AddOpenSslCrypto();
void AddNettleCrypto();
void AddGnuTlsCrypto();
void AddMbedTlsCrypto();
void AddBotanCrypto();
void AddBearSslCrypto();

}  // namespace velmora
