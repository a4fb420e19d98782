#include <botan/auto_rng.h>
#include <botan/pubkey.h>
#include <botan/rsa.h>

#include <memory>

#include "benchmarks/rsa_cases.h"

namespace velmora {
namespace {

Botan::BigInt NumberOf(const ByteString& bytes) {
    return {UnsignedBytes(bytes), bytes.size()};
}

Botan::RSA_PrivateKey TheirKey(const RsaNumbers& key) {
    return {NumberOf(key.p), NumberOf(key.q), NumberOf(key.e), NumberOf(key.d), NumberOf(key.n)};
}

// A private operation is blinded and its result checked; neither can be switched off.
struct Botan2 {
    static constexpr const char* kName = "Botan";

    static auto Public(const RsaNumbers& key) {
        const auto random = std::make_shared<Botan::AutoSeeded_RNG>();
        return [random, &key, operation = std::make_shared<Botan::PK_Encryptor_EME>(TheirKey(key), *random, "Raw")] {
            return operation->encrypt(UnsignedBytes(key.block), key.block.size(), *random);
        };
    }

    static auto Private(const RsaNumbers& key) {
        const auto random = std::make_shared<Botan::AutoSeeded_RNG>();
        return [random, &key, operation = std::make_shared<Botan::PK_Decryptor_EME>(TheirKey(key), *random, "Raw")] {
            return operation->decrypt(UnsignedBytes(key.block), key.block.size());
        };
    }
};

}  // namespace

void AddBotanRsa(const RsaNumbers& key) {
    AddRsaContender<Botan2>(key);
}

}  // namespace velmora
