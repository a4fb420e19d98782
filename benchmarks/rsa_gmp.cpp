#include "benchmarks/gmp_number.h"
#include "benchmarks/rsa_cases.h"

namespace velmora {
namespace {

// GMP has no RSA of its own: this is RFC 8017, 5.1, in its calls, without any defence against who measures its time.
struct Gmp {
    static constexpr const char* kName = "GMP";

    static auto Public(const RsaNumbers& key) {
        return [n = GmpNumber(key.n), e = GmpNumber(key.e), number = GmpNumber(), output = key.block,
                &block = key.block]() mutable -> std::string_view {
            number.Set(block);
            mpz_powm(number.value, number.value, e.value, n.value);
            return {output.data(), number.Write(output)};
        };
    }

    static auto Private(const RsaNumbers& key) {
        return [p = GmpNumber(key.p), q = GmpNumber(key.q), dP = GmpNumber(key.dP), dQ = GmpNumber(key.dQ),
                qInverse = GmpNumber(key.qInverse), number = GmpNumber(), m1 = GmpNumber(), m2 = GmpNumber(),
                output = key.block, &block = key.block]() mutable -> std::string_view {
            number.Set(block);
            mpz_powm(m1.value, number.value, dP.value, p.value);
            mpz_powm(m2.value, number.value, dQ.value, q.value);
            mpz_sub(m1.value, m1.value, m2.value);
            mpz_mul(m1.value, m1.value, qInverse.value);
            mpz_mod(m1.value, m1.value, p.value);
            mpz_addmul(m2.value, m1.value, q.value);
            return {output.data(), m2.Write(output)};
        };
    }
};

}  // namespace

void AddGmpRsa(const RsaNumbers& key) {
    AddRsaContender<Gmp>(key);
}

}  // namespace velmora
