#include <nettle/rsa.h>

#include <memory>

#include "benchmarks/gmp_number.h"
#include "benchmarks/rsa_cases.h"

namespace velmora {
namespace {

using KeyPointer = std::shared_ptr<rsa_private_key>;

KeyPointer TheirKey(const RsaNumbers& key) {
    KeyPointer made(new rsa_private_key, [](rsa_private_key* pointer) {
        rsa_private_key_clear(pointer);
        delete pointer;
    });
    rsa_private_key_init(made.get());
    mpz_set(made->p, GmpNumber(key.p).value);
    mpz_set(made->q, GmpNumber(key.q).value);
    mpz_set(made->a, GmpNumber(key.dP).value);
    mpz_set(made->b, GmpNumber(key.dQ).value);
    mpz_set(made->c, GmpNumber(key.qInverse).value);
    rsa_private_key_prepare(made.get());
    return made;
}

// Its public operation is a single call of GMP, which takes part itself.
struct Nettle {
    static constexpr const char* kName = "nettle";

    static auto Private(const RsaNumbers& key) {
        return [theirs = TheirKey(key), number = GmpNumber(), output = key.block,
                &block = key.block]() mutable -> std::string_view {
            number.Set(block);
            rsa_compute_root(theirs.get(), number.value, number.value);
            return {output.data(), number.Write(output)};
        };
    }
};

}  // namespace

void AddNettleRsa(const RsaNumbers& key) {
    AddRsaContender<Nettle>(key);
}

}  // namespace velmora
