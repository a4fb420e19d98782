#pragma once

#include <string>
#include <string_view>

#include "benchmarks/ratio_table.h"
#include "benchmarks/same_result.h"
#include "benchmarks/unsigned_bytes.h"
#include "config/byte_string.h"

namespace velmora {

// The cases of rsa_bench. A library takes part as a type of its own with the name kName and the functions
// Public and Private, one or both. Each makes the key ready as the library wants it, and gives the work: a callable
// that does the operation once, without any padding, on a block of bytes, and gives the resulting bytes.

// A key with the public exponent 65537, its numbers big-endian.
struct RsaNumbers {
    std::string bits;  // the length of the modulus, as the name of its cases
    ByteString n, e, d, p, q;
    ByteString dP, dQ, qInverse;  // d mod (p - 1), d mod (q - 1), q^-1 mod p
    ByteString block;             // as long as the modulus and below it, to be worked on
};

// The result may or may not have the zero bytes that it starts with.
template <typename Library, typename Work>
void AddRsaWork(const std::string& unit, const std::string& caseName, Work work) {
    const auto first = work();
    std::string_view digits(reinterpret_cast<const char*>(std::data(first)), std::size(first));
    digits.remove_prefix(digits.find_first_not_of('\0'));
    RequireTheSame(unit, caseName, Library::kName, digits);
    AddContender(unit, caseName, Library::kName, [work]() mutable {
        auto result = work();
        benchmark::DoNotOptimize(result);
    });
}

template <typename Library>
void AddRsaContender(const RsaNumbers& key) {
    if constexpr (requires { &Library::Public; }) AddRsaWork<Library>("rsa-public", key.bits, Library::Public(key));
    if constexpr (requires { &Library::Private; }) AddRsaWork<Library>("rsa-private", key.bits, Library::Private(key));
}

// The contenders, each in a source of its own. Key outlives them.
void AddOurRsa(const RsaNumbers& key);
void AddOpenSslRsa(const RsaNumbers& key);
void AddGmpRsa(const RsaNumbers& key);
void AddNettleRsa(const RsaNumbers& key);
void AddMbedTlsRsa(const RsaNumbers& key);
void AddBotanRsa(const RsaNumbers& key);
void AddBearSslRsa(const RsaNumbers& key);

// What RSA is made of, ours beside OpenSSL's and GMP's: exponentiations, and the inverse that a private key costs
// before its first use.
void AddBigNumbers(const RsaNumbers& key);

}  // namespace velmora
