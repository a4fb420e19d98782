#include "benchmarks/gmp_number.h"
#include "benchmarks/openssl_number.h"
#include "benchmarks/rsa_cases.h"
#include "crypto/big_int_limbs.h"
#include "crypto/mod_inverse.h"
#include "crypto/mod_pow.h"
#include "crypto/odd_power.h"

namespace velmora {
namespace {

const std::string kOpenSsl = "OpenSSL";
const std::string kGmp = "GMP";

// A whole exponentiation from plain numbers, where nothing about the modulus is known beforehand: "mod-pow" as this
// processor does it, "mod-pow-portable" as one without vector products would. The exponent is as long as the modulus,
// or 65537.
void AddModPow(const std::string& caseName, const ByteString& base, const ByteString& exponent,
               const ByteString& modulus) {
    for (const std::string unit : {"mod-pow", "mod-pow-portable"}) {
        AddContender(unit, caseName, kGmp,
                     [b = GmpNumber(base), e = GmpNumber(exponent), m = GmpNumber(modulus), r = GmpNumber()]() mutable {
                         mpz_powm(r.value, b.value, e.value, m.value);
                     });
        AddContender(unit, caseName, kOpenSsl,
                     [b = OpenSslNumberOf(base), e = OpenSslNumberOf(exponent), m = OpenSslNumberOf(modulus),
                      r = OpenSslNumberOf(""), context = std::shared_ptr<BN_CTX>(BN_CTX_new(), BN_CTX_free)] {
                         BN_mod_exp(r.get(), b.get(), e.get(), m.get(), context.get());
                     });
    }
    AddContender("mod-pow", caseName, kOurs, [b = fromBytes(base), e = fromBytes(exponent), m = fromBytes(modulus)] {
        benchmark::DoNotOptimize(modPow(b, e, m));
    });
    const auto limbs = [](const ByteString& bytes) { return limbsOf(fromBytes(bytes).magnitude); };
    AddContender("mod-pow-portable", caseName, kOurs,
                 [power = ModularPower{limbs(base), limbs(exponent), limbs(modulus)}] {
                     benchmark::DoNotOptimize(portablePower(power));
                 });
}

void AddModInverse(const RsaNumbers& key) {
    const std::string caseName = std::to_string(key.p.size() * 8);
    AddContender("mod-inverse", caseName, kOurs, [number = fromBytes(key.q), modulus = fromBytes(key.p)] {
        benchmark::DoNotOptimize(modInverse(number, modulus));
    });
    AddContender("mod-inverse", caseName, kGmp,
                 [number = GmpNumber(key.q), modulus = GmpNumber(key.p), result = GmpNumber()]() mutable {
                     mpz_invert(result.value, number.value, modulus.value);
                 });
    AddContender("mod-inverse", caseName, kOpenSsl,
                 [number = OpenSslNumberOf(key.q), modulus = OpenSslNumberOf(key.p), result = OpenSslNumberOf(""),
                  context = std::shared_ptr<BN_CTX>(BN_CTX_new(), BN_CTX_free)] {
                     BN_mod_inverse(result.get(), number.get(), modulus.get(), context.get());
                 });
}

}  // namespace

void AddBigNumbers(const RsaNumbers& key) {
    AddModPow(key.bits, key.block, key.d, key.n);
    AddModPow(key.bits + " e=65537", key.block, key.e, key.n);
    AddModInverse(key);
}

}  // namespace velmora
