#include "tests/crypto/plain_certificate.h"

#include <cstddef>
#include <cstdint>

namespace velmora {
namespace {

uint8_t byteAt(const ByteString& bytes, size_t position) {
    return static_cast<uint8_t>(bytes[position]);
}

void dropZeros(ByteString& bytes) {
    while (!bytes.empty() && bytes[0] == '\0') bytes.erase(0, 1);
}

// An element with its header, and how long the header is.
struct Element {
    ByteString bytes;
    size_t headerBytes = 0;
    ByteString content() const { return bytes.substr(headerBytes); }
};

// Cuts the first element off, whatever its tag is. One that is longer than what is left takes that along and has no
// content.
Element cut(ByteString& input) {
    const uint8_t first = byteAt(input, 1);
    const size_t lengthBytes = first < 0x80 ? 0 : first & 0x0F;
    ByteString length = input.substr(2, lengthBytes);
    if (first < 0x80) length = ByteString(1, static_cast<char>(first));
    const bool lengthIsWhole = first < 0x80 || length.size() == lengthBytes;
    dropZeros(length);
    size_t contentBytes = 0;
    for (const char byte : length.substr(0, 5)) contentBytes = contentBytes * 256 + static_cast<uint8_t>(byte);
    const size_t wholeBytes = 2 + lengthBytes + contentBytes;
    const bool fits = lengthIsWhole && wholeBytes <= input.size();
    Element element = {fits ? input.substr(0, wholeBytes) : input, fits ? 2 + lengthBytes : input.size()};
    input.erase(0, fits ? wholeBytes : input.size());
    return element;
}

Element take(uint8_t tag, ByteString& input) {
    while (input.size() >= 2 && input[0] == '\0') input.erase(0, 1);
    if (input.size() < 2) return {};
    if (byteAt(input, 0) != tag) return {};
    return cut(input);
}

ByteString takeContent(uint8_t tag, ByteString& input) {
    return take(tag, input).content();
}

bool startsWithSet(ByteString name) {
    while (name.size() >= 2 && name[0] == '\0') name.erase(0, 1);
    return name.size() >= 2 && name[0] == '\x31';
}

}  // namespace

PlainCertificate::PlainCertificate(const ByteString& der) {
    ByteString input = der;
    ByteString parts = takeContent(0x30, input);
    const Element tbs = take(0x30, parts);
    signedBytes = tbs.bytes;

    ByteString fields = tbs.content();
    takeContent(0xA0, fields);
    takeContent(0x02, fields);
    takeContent(0x30, fields);
    issuer = takeContent(0x30, fields);
    takeContent(0x30, fields);
    subject = takeContent(0x30, fields);
    commonName = plainCommonName(subject);
    ByteString keyInfo = takeContent(0x30, fields);

    takeContent(0x30, keyInfo);
    ByteString bits = takeContent(0x03, keyInfo);
    ByteString key = takeContent(0x30, bits);
    modulus = takeContent(0x02, key);
    dropZeros(modulus);
    exponent = takeContent(0x02, key);
    dropZeros(exponent);

    ByteString algorithm = takeContent(0x30, parts);
    signatureAlgorithm = takeContent(0x06, algorithm);
    signature = takeContent(0x03, parts);
    dropZeros(signature);
}

bool operator==(const Certificate& certificate, const PlainCertificate& plain) {
    return certificate.signedBytes == plain.signedBytes && certificate.issuer == plain.issuer &&
           certificate.subject == plain.subject && certificate.commonName == plain.commonName &&
           certificate.modulus == plain.modulus && certificate.exponent == plain.exponent &&
           certificate.signatureAlgorithm == plain.signatureAlgorithm && certificate.signature == plain.signature;
}

ByteString plainCommonName(ByteString name) {
    ByteString result;
    while (startsWithSet(name)) {
        ByteString set = takeContent(0x31, name);
        ByteString attribute = takeContent(0x30, set);
        const ByteString type = takeContent(0x06, attribute);
        while (attribute.size() >= 2 && attribute[0] == '\0') attribute.erase(0, 1);
        if (type != "\x55\x04\x03" || attribute.size() < 2) continue;
        const uint8_t stringType = byteAt(attribute, 0);
        if (stringType == 12 || stringType == 19 || stringType == 20) result = cut(attribute).content();
    }
    return result;
}

}  // namespace velmora
