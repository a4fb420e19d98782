// Hashes, ciphers and the pseudo-random function of TLS 1.0 beside those of other libraries.

#include <cstdint>
#include <map>
#include <stdexcept>
#include <utility>

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

void RequireTheSame(const std::string& unit, const std::string& caseName, const std::string& contender,
                    std::string_view result) {
    static std::map<std::pair<std::string, std::string>, ByteString> results;
    const ByteString& first = results.try_emplace({unit, caseName}, result).first->second;
    if (result != first) throw std::runtime_error(unit + " " + caseName + ": " + contender + " gives another result");
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
