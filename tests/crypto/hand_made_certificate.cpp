#include "tests/crypto/hand_made_certificate.h"

namespace velmora {
namespace {

constexpr uint8_t kInteger = 0x02;
constexpr uint8_t kBitString = 0x03;
constexpr uint8_t kObjectIdentifier = 0x06;
constexpr uint8_t kSequence = 0x30;
constexpr uint8_t kSet = 0x31;

ByteString algorithmIdentifier(std::string_view identifier) {
    return derElement(kSequence, derElement(kObjectIdentifier, identifier) + derElement(0x05, ""));
}

}  // namespace

ByteString derHeader(uint8_t tag, size_t contentBytes) {
    ByteString header(1, static_cast<char>(tag));
    if (contentBytes < 0x80) return header += static_cast<char>(contentBytes);
    ByteString length;
    for (size_t rest = contentBytes; rest > 0; rest >>= 8) length.insert(0, 1, static_cast<char>(rest & 0xFF));
    header += static_cast<char>(0x80 | length.size());
    return header += length;
}

ByteString derElement(uint8_t tag, std::string_view content) {
    return derHeader(tag, content.size()).append(content);
}

ByteString nameAttribute(std::string_view type, uint8_t stringTag, std::string_view text) {
    return derElement(kSet, derElement(kSequence, derElement(kObjectIdentifier, type) + derElement(stringTag, text)));
}

ByteString nameContent(std::string_view commonName) {
    return nameAttribute(kCommonNameType, 0x0C, commonName);
}

ByteString HandMadeCertificate::tbs() const {
    const ByteString key = derElement(kSequence, derElement(kInteger, modulus) + derElement(kInteger, exponent));
    const ByteString keyInfo =
        algorithmIdentifier("\x2A\x86\x48\x86\xF7\x0D\x01\x01\x01") + derElement(kBitString, ByteString(1, '\0') + key);
    return derElement(kSequence, version + derElement(kInteger, "\x07") + algorithmIdentifier(algorithm) +
                                     derElement(kSequence, issuer) + derElement(kSequence, validity) +
                                     derElement(kSequence, subject) + derElement(kSequence, keyInfo));
}

ByteString HandMadeCertificate::der() const {
    return derElement(kSequence,
                      tbs() + algorithmIdentifier(algorithm) + derElement(kBitString, unusedBits + signature));
}

}  // namespace velmora
