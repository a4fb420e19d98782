#include <bearssl.h>

#include "benchmarks/rsa_cases.h"

namespace velmora {
namespace {

// It takes the same time whatever the key.
struct BearSsl {
    static constexpr const char* kName = "BearSSL";

    static auto Public(const RsaNumbers& key) {
        return [operation = br_rsa_public_get_default(), n = key.n, e = key.e, &key,
                output = ByteString()]() mutable -> std::string_view {
            const br_rsa_public_key theirs = {UnsignedBytes(n), n.size(), UnsignedBytes(e), e.size()};
            output = key.block;
            operation(UnsignedBytes(output), output.size(), &theirs);
            return output;
        };
    }

    static auto Private(const RsaNumbers& key) {
        return [operation = br_rsa_private_get_default(), numbers = key, &key,
                output = ByteString()]() mutable -> std::string_view {
            const auto bits = static_cast<uint32_t>(key.block.size() * 8);
            const br_rsa_private_key theirs = {
                bits,
                UnsignedBytes(numbers.p),
                numbers.p.size(),
                UnsignedBytes(numbers.q),
                numbers.q.size(),
                UnsignedBytes(numbers.dP),
                numbers.dP.size(),
                UnsignedBytes(numbers.dQ),
                numbers.dQ.size(),
                UnsignedBytes(numbers.qInverse),
                numbers.qInverse.size(),
            };
            output = key.block;
            operation(UnsignedBytes(output), &theirs);
            return output;
        };
    }
};

}  // namespace

void AddBearSslRsa(const RsaNumbers& key) {
    AddRsaContender<BearSsl>(key);
}

}  // namespace velmora
