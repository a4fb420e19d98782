#include "tests/crypto/pem.h"

#include <cstddef>
#include <cstdint>

namespace velmora {

ByteString certificateOfPem(std::string_view pem) {
    constexpr std::string_view kBegin = "-----BEGIN CERTIFICATE-----";
    constexpr std::string_view kEnd = "-----END CERTIFICATE-----";
    constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const size_t start = pem.find(kBegin) + kBegin.size();
    ByteString der;
    uint32_t bits = 0;
    int bitCount = 0;
    for (const char character : pem.substr(start, pem.find(kEnd) - start)) {
        const size_t value = kAlphabet.find(character);
        if (value == std::string_view::npos) continue;  // a line end or the padding
        bits = bits << 6 | static_cast<uint32_t>(value);
        bitCount += 6;
        if (bitCount < 8) continue;
        bitCount -= 8;
        der += static_cast<char>(bits >> bitCount & 0xFF);
    }
    return der;
}

}  // namespace velmora
