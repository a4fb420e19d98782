#include "crypto/rsa_private_key.h"

#include <string_view>

#include "config/trace_log.h"
#include "crypto/der.h"

namespace velmora {
namespace {

// RSAPrivateKey ::= SEQUENCE {
//     version           INTEGER  (0: two primes)
//     modulus           INTEGER
//     publicExponent    INTEGER
//     privateExponent   INTEGER
//     prime1            INTEGER
//     prime2            INTEGER
//     exponent1, exponent2, coefficient: not read
// }

constexpr size_t kShortestKeyBytes = 10;

// Whether a number stands there and is zero, in however many bytes.
bool isZero(std::string_view number) {
    return !number.empty() && number.find_first_not_of('\0') == std::string_view::npos;
}

}  // namespace

RsaPrivateKeyNumbers readRsaPrivateKey(const ByteString& der) {
    if (der.size() < kShortestKeyBytes) return {};
    std::string_view input = der;
    std::string_view key = takeElement(kDerSequence, input);
    bool readable = isZero(takeElement(kDerInteger, key));
    RsaPrivateKeyNumbers numbers;
    for (ByteString* number :
         {&numbers.modulus, &numbers.publicExponent, &numbers.privateExponent, &numbers.prime1, &numbers.prime2}) {
        *number = takeElement(kDerInteger, key);
        readable = readable && !number->empty();
    }
    if (readable) return numbers;
    WriteLog(5, "Cannot read private RSA key");
    return {};
}

}  // namespace velmora
