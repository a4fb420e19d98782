#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>

#include <memory>

#include "benchmarks/openssl_number.h"
#include "benchmarks/rsa_cases.h"

namespace velmora {
namespace {

using KeyPointer = std::shared_ptr<EVP_PKEY>;

KeyPointer TheirKey(const RsaNumbers& key) {
    const std::unique_ptr<OSSL_PARAM_BLD, decltype(&OSSL_PARAM_BLD_free)> builder(OSSL_PARAM_BLD_new(),
                                                                                  OSSL_PARAM_BLD_free);
    const std::pair<const char*, OpenSslNumber> numbers[] = {
        {OSSL_PKEY_PARAM_RSA_N, OpenSslNumberOf(key.n)},
        {OSSL_PKEY_PARAM_RSA_E, OpenSslNumberOf(key.e)},
        {OSSL_PKEY_PARAM_RSA_D, OpenSslNumberOf(key.d)},
        {OSSL_PKEY_PARAM_RSA_FACTOR1, OpenSslNumberOf(key.p)},
        {OSSL_PKEY_PARAM_RSA_FACTOR2, OpenSslNumberOf(key.q)},
        {OSSL_PKEY_PARAM_RSA_EXPONENT1, OpenSslNumberOf(key.dP)},
        {OSSL_PKEY_PARAM_RSA_EXPONENT2, OpenSslNumberOf(key.dQ)},
        {OSSL_PKEY_PARAM_RSA_COEFFICIENT1, OpenSslNumberOf(key.qInverse)},
    };
    for (const auto& [name, number] : numbers) OSSL_PARAM_BLD_push_BN(builder.get(), name, number.get());
    const std::unique_ptr<OSSL_PARAM, decltype(&OSSL_PARAM_free)> parameters(OSSL_PARAM_BLD_to_param(builder.get()),
                                                                             OSSL_PARAM_free);
    const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(
        EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr), EVP_PKEY_CTX_free);
    EVP_PKEY* made = nullptr;
    EVP_PKEY_fromdata_init(context.get());
    EVP_PKEY_fromdata(context.get(), &made, EVP_PKEY_KEYPAIR, parameters.get());
    return {made, EVP_PKEY_free};
}

using Initialise = int (*)(EVP_PKEY_CTX*);
using Operation = int (*)(EVP_PKEY_CTX*, unsigned char*, size_t*, const unsigned char*, size_t);

auto RawOperation(const RsaNumbers& key, Initialise initialise, Operation operation) {
    const std::shared_ptr<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new(TheirKey(key).get(), nullptr), EVP_PKEY_CTX_free);
    initialise(context.get());
    EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_NO_PADDING);
    return [context, operation, &key, output = key.block]() mutable -> std::string_view {
        size_t length = output.size();
        operation(context.get(), UnsignedBytes(output), &length, UnsignedBytes(key.block), key.block.size());
        return output;
    };
}

struct OpenSsl {
    static constexpr const char* kName = "OpenSSL";

    static auto Public(const RsaNumbers& key) { return RawOperation(key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt); }

    static auto Private(const RsaNumbers& key) { return RawOperation(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt); }
};

}  // namespace

void AddOpenSslRsa(const RsaNumbers& key) {
    AddRsaContender<OpenSsl>(key);
}

}  // namespace velmora
