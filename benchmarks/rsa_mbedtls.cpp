#include <mbedtls/rsa.h>

#include <memory>

#include "benchmarks/rsa_cases.h"

namespace velmora {
namespace {

using KeyPointer = std::shared_ptr<mbedtls_rsa_context>;

KeyPointer TheirKey(const RsaNumbers& key) {
    KeyPointer made(new mbedtls_rsa_context, [](mbedtls_rsa_context* pointer) {
        mbedtls_rsa_free(pointer);
        delete pointer;
    });
    mbedtls_rsa_init(made.get(), MBEDTLS_RSA_PKCS_V15, 0);
    mbedtls_rsa_import_raw(made.get(), UnsignedBytes(key.n), key.n.size(), UnsignedBytes(key.p), key.p.size(),
                           UnsignedBytes(key.q), key.q.size(), UnsignedBytes(key.d), key.d.size(), UnsignedBytes(key.e),
                           key.e.size());
    mbedtls_rsa_complete(made.get());
    return made;
}

// Without a source of random numbers, it does without blinding, as ours does.
struct MbedTls {
    static constexpr const char* kName = "Mbed TLS";

    static auto Public(const RsaNumbers& key) {
        return [theirs = TheirKey(key), &key, output = key.block]() mutable -> std::string_view {
            mbedtls_rsa_public(theirs.get(), UnsignedBytes(key.block), UnsignedBytes(output));
            return output;
        };
    }

    static auto Private(const RsaNumbers& key) {
        return [theirs = TheirKey(key), &key, output = key.block]() mutable -> std::string_view {
            mbedtls_rsa_private(theirs.get(), nullptr, nullptr, UnsignedBytes(key.block), UnsignedBytes(output));
            return output;
        };
    }
};

}  // namespace

void AddMbedTlsRsa(const RsaNumbers& key) {
    AddRsaContender<MbedTls>(key);
}

}  // namespace velmora
