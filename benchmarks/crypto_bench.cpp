// Hashes, ciphers and the pseudo-random function of TLS 1.0 beside those of other libraries.

#include <cstdint>
#include <map>

#include "benchmarks/crypto_cases.h"

namespace velmora {

const ByteString& SomeBytes(size_t count) {
    static std::map<size_t, ByteString> made;
    ByteString& bytes = made[count];
    bytes.reserve(count);
    uint32_t state = 1;
    while (bytes.size() < count) bytes += static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

}  // namespace velmora

int main(int argc, char** argv) {
    velmora::AddOurCrypto();
    velmora::AddOpenSslCrypto();
    velmora::AddNettleCrypto();
    velmora::AddGnuTlsCrypto();
    velmora::AddMbedTlsCrypto();
    velmora::AddBotanCrypto();
    velmora::AddBearSslCrypto();
    return velmora::RunRatioTable(argc, argv);
}
