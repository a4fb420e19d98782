#include <gmp.h>
#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "benchmarks/ratio_table.h"
#include "crypto/big_int_limbs.h"
#include "crypto/mod_inverse.h"
#include "crypto/mod_pow.h"
#include "crypto/odd_power.h"
#include "crypto/rsa.h"

namespace velmora {
namespace {

const std::string kLibcrypto = "libcrypto";
const std::string kGmp = "gmp";

// libcrypto's objects with what frees them. They live as long as the contenders that use them.
using KeyPointer = std::shared_ptr<EVP_PKEY>;
using NumberPointer = std::shared_ptr<BIGNUM>;

unsigned char* unsignedBytes(ByteString& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

const unsigned char* unsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

NumberPointer keyNumber(const KeyPointer& key, const char* name) {
    BIGNUM* number = nullptr;
    EVP_PKEY_get_bn_param(key.get(), name, &number);
    return {number, BN_free};
}

ByteString bytesOf(const NumberPointer& number) {
    ByteString bytes(static_cast<size_t>(BN_num_bytes(number.get())), '\0');
    BN_bn2bin(number.get(), unsignedBytes(bytes));
    return bytes;
}

ByteString keyBytes(const KeyPointer& key, const char* name) {
    return bytesOf(keyNumber(key, name));
}

RsaKey ourKey(const KeyPointer& key) {
    RsaKey ours;
    setPrivateKey(ours, keyBytes(key, "d"), keyBytes(key, "e"), keyBytes(key, "n"), keyBytes(key, "rsa-factor1"),
                  keyBytes(key, "rsa-factor2"));
    return ours;
}

// libcrypto's raw operation, without any padding.
class RawOperation {
public:
    using Initialise = int (*)(EVP_PKEY_CTX*);
    using Operate = int (*)(EVP_PKEY_CTX*, unsigned char*, size_t*, const unsigned char*, size_t);

    RawOperation(const KeyPointer& key, Initialise initialise, Operate chosen)
        : context(EVP_PKEY_CTX_new(key.get(), nullptr), EVP_PKEY_CTX_free), operate(chosen) {
        initialise(context.get());
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_NO_PADDING);
    }

    ByteString operator()(const ByteString& block) {
        ByteString result = block;
        size_t length = result.size();
        operate(context.get(), unsignedBytes(result), &length, unsignedBytes(block), block.size());
        return result;
    }

private:
    std::shared_ptr<EVP_PKEY_CTX> context;
    Operate operate;
};

// A block below every modulus of its length.
ByteString someBlock(size_t byteCount) {
    ByteString block(1, '\0');
    for (size_t index = 1; index < byteCount; ++index) block += static_cast<char>(index * 167 + 13);
    return block;
}

// A contender that does not give what ours gives would make the ratio worthless.
void requireTheSame(const std::string& unit, const ByteString& ours, const ByteString& theirs) {
    if (ours == theirs) return;
    static_cast<void>(std::fprintf(stderr, "%s: libcrypto's result differs from ours\n", unit.c_str()));
    std::exit(1);
}

void addRsa(size_t bits) {
    const KeyPointer key(EVP_RSA_gen(bits), EVP_PKEY_free);
    const RsaKey ours = ourKey(key);
    const ByteString block = someBlock(bits / 8);
    const std::string caseName = std::to_string(bits);

    RawOperation encrypt(key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt);
    requireTheSame("rsa-public", rsaPublic(ours, block), encrypt(block));
    AddContender("rsa-public", caseName, kOurs, [=] { benchmark::DoNotOptimize(rsaPublic(ours, block)); });
    AddContender("rsa-public", caseName, kLibcrypto, [=]() mutable { benchmark::DoNotOptimize(encrypt(block)); });

    RawOperation decrypt(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt);
    requireTheSame("rsa-private", rsaPrivate(ours, block), decrypt(block));
    AddContender("rsa-private", caseName, kOurs, [=] { benchmark::DoNotOptimize(rsaPrivate(ours, block)); });
    AddContender("rsa-private", caseName, kLibcrypto, [=]() mutable { benchmark::DoNotOptimize(decrypt(block)); });
}

// A number of GMP's that frees itself.
struct GmpNumber {
    GmpNumber() { mpz_init(value); }
    explicit GmpNumber(const ByteString& bytes) : GmpNumber() {
        mpz_import(value, bytes.size(), 1, 1, 1, 0, bytes.data());
    }
    GmpNumber(const GmpNumber& other) { mpz_init_set(value, other.value); }
    GmpNumber& operator=(const GmpNumber&) = delete;
    ~GmpNumber() { mpz_clear(value); }

    mpz_t value;
};

// A whole exponentiation from plain numbers, where nothing about the modulus is known beforehand: "mod-pow" as this
// processor does it, "mod-pow-portable" as one without vector products would. The exponent is as long as the modulus,
// or 65537.
void addModPow(const std::string& caseName, const ByteString& base, const ByteString& exponent,
               const ByteString& modulus) {
    const auto number = [](const ByteString& bytes) {
        return NumberPointer(BN_bin2bn(unsignedBytes(bytes), static_cast<int>(bytes.size()), nullptr), BN_free);
    };
    for (const std::string unit : {"mod-pow", "mod-pow-portable"}) {
        AddContender(unit, caseName, kGmp,
                     [b = GmpNumber(base), e = GmpNumber(exponent), m = GmpNumber(modulus), r = GmpNumber()]() mutable {
                         mpz_powm(r.value, b.value, e.value, m.value);
                     });
        AddContender(unit, caseName, kLibcrypto,
                     [b = number(base), e = number(exponent), m = number(modulus), r = number(""),
                      context = std::shared_ptr<BN_CTX>(BN_CTX_new(), BN_CTX_free)] {
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

void addModPow(size_t bits) {
    const KeyPointer key(EVP_RSA_gen(bits), EVP_PKEY_free);
    const ByteString block = someBlock(bits / 8);
    const std::string caseName = std::to_string(bits);
    addModPow(caseName, block, keyBytes(key, "d"), keyBytes(key, "n"));
    addModPow(caseName + " e=65537", block, keyBytes(key, "e"), keyBytes(key, "n"));
}

// What a private key costs before its first use.
void addModInverse(size_t bits) {
    const KeyPointer key(EVP_RSA_gen(bits), EVP_PKEY_free);
    const ByteString p = keyBytes(key, "rsa-factor1");
    const ByteString q = keyBytes(key, "rsa-factor2");
    const std::string caseName = std::to_string(bits / 2);
    AddContender("mod-inverse", caseName, kOurs, [number = fromBytes(q), modulus = fromBytes(p)] {
        benchmark::DoNotOptimize(modInverse(number, modulus));
    });
    AddContender("mod-inverse", caseName, kGmp,
                 [number = GmpNumber(q), modulus = GmpNumber(p), result = GmpNumber()]() mutable {
                     mpz_invert(result.value, number.value, modulus.value);
                 });
    AddContender(
        "mod-inverse", caseName, kLibcrypto,
        [number = keyNumber(key, "rsa-factor2"), modulus = keyNumber(key, "rsa-factor1"),
         result = NumberPointer(BN_new(), BN_free), context = std::shared_ptr<BN_CTX>(BN_CTX_new(), BN_CTX_free)] {
            BN_mod_inverse(result.get(), number.get(), modulus.get(), context.get());
        });
}

}  // namespace
}  // namespace velmora

int main(int argc, char** argv) {
    for (const size_t bits : {1024U, 2048U, 4096U}) {
        velmora::addRsa(bits);
        velmora::addModPow(bits);
        velmora::addModInverse(bits);
    }
    return velmora::RunRatioTable(argc, argv);
}
