// RSA beside that of other libraries, and the arithmetic that it is made of.

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <list>
#include <memory>

#include "benchmarks/rsa_cases.h"

namespace velmora {
namespace {

ByteString NumberOf(const EVP_PKEY* key, const char* name) {
    BIGNUM* number = nullptr;
    EVP_PKEY_get_bn_param(key, name, &number);
    ByteString bytes(static_cast<size_t>(BN_num_bytes(number)), '\0');
    BN_bn2bin(number, UnsignedBytes(bytes));
    BN_free(number);
    return bytes;
}

// A block below every modulus of its length.
ByteString SomeBlock(size_t byteCount) {
    ByteString block(1, '\0');
    for (size_t index = 1; index < byteCount; ++index) block += static_cast<char>(index * 167 + 13);
    return block;
}

RsaNumbers NewKey(size_t bits) {
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_RSA_gen(bits), EVP_PKEY_free);
    const auto number = [&](const char* name) { return NumberOf(key.get(), name); };
    return {
        .bits = std::to_string(bits),
        .n = number(OSSL_PKEY_PARAM_RSA_N),
        .e = number(OSSL_PKEY_PARAM_RSA_E),
        .d = number(OSSL_PKEY_PARAM_RSA_D),
        .p = number(OSSL_PKEY_PARAM_RSA_FACTOR1),
        .q = number(OSSL_PKEY_PARAM_RSA_FACTOR2),
        .dP = number(OSSL_PKEY_PARAM_RSA_EXPONENT1),
        .dQ = number(OSSL_PKEY_PARAM_RSA_EXPONENT2),
        .qInverse = number(OSSL_PKEY_PARAM_RSA_COEFFICIENT1),
        .block = SomeBlock(bits / 8),
    };
}

void AddAll(const RsaNumbers& key) {
    AddOurRsa(key);
    AddOpenSslRsa(key);
    AddGmpRsa(key);
    AddNettleRsa(key);
    AddMbedTlsRsa(key);
    AddBotanRsa(key);
    AddBearSslRsa(key);
    AddBigNumbers(key);
}

}  // namespace
}  // namespace velmora

int main(int argc, char** argv) {
    std::list<velmora::RsaNumbers> keys;
    for (const size_t bits : {1024U, 2048U, 4096U}) velmora::AddAll(keys.emplace_back(velmora::NewKey(bits)));
    return velmora::RunRatioTable(argc, argv);
}
