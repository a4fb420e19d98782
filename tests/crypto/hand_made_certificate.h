#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// The header of a DER element: its tag and its length in the shortest form.
ByteString derHeader(uint8_t tag, size_t contentBytes);

// The whole element.
ByteString derElement(uint8_t tag, std::string_view content);

// Object identifiers as they stand in DER.
inline constexpr std::string_view kMd5WithRsaEncryption = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x04";
inline constexpr std::string_view kSha1WithRsaEncryption = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x05";
inline constexpr std::string_view kCommonNameType = "\x55\x04\x03";
inline constexpr std::string_view kOrganizationType = "\x55\x04\x0A";

// One set with one attribute, as a Name consists of.
ByteString nameAttribute(std::string_view type, uint8_t stringTag, std::string_view text);

// The content of a Name that has just a common name, a UTF8String.
ByteString nameContent(std::string_view commonName);

// A certificate of which every part can be chosen. Its key has the exponent 1, so that it signs without a private key:
// the signature is what was signed.
struct HandMadeCertificate {
    ByteString version = derElement(0xA0, derElement(0x02, "\x02"));     // the whole element
    ByteString issuer = nameContent("Issuer");                           // content of a Name
    ByteString validity = "from the first day to the last";              // no dates at all: nobody reads them
    ByteString subject = nameContent("Subject");                         // content of a Name
    ByteString modulus = ByteString(1, '\0') + ByteString(128, '\xFF');  // above every signature that starts with 00
    ByteString exponent = "\x01";
    ByteString algorithm = ByteString(kSha1WithRsaEncryption);
    ByteString unusedBits = ByteString(1, '\0');
    ByteString signature = "signature";

    ByteString tbs() const;  // the whole tbsCertificate
    ByteString der() const;
};

}  // namespace velmora
