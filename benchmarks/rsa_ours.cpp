#include "benchmarks/rsa_cases.h"
#include "crypto/rsa.h"

namespace velmora {
namespace {

struct Ours {
    static inline const std::string& kName = kOurs;

    static auto Public(const RsaNumbers& key) {
        return [ours = OurKey(key), &key] { return rsaPublic(ours, key.block); };
    }

    static auto Private(const RsaNumbers& key) {
        return [ours = OurKey(key), &key] { return rsaPrivate(ours, key.block); };
    }

    static RsaKey OurKey(const RsaNumbers& key) {
        RsaKey ours;
        setPrivateKey(ours, key.d, key.e, key.n, key.p, key.q);
        return ours;
    }
};

}  // namespace

void AddOurRsa(const RsaNumbers& key) {
    AddRsaContender<Ours>(key);
}

}  // namespace velmora
