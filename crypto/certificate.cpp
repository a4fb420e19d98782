#include "crypto/certificate.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "crypto/der.h"

namespace velmora {
namespace {

// Certificate ::= SEQUENCE {
//     tbsCertificate SEQUENCE {
//         version              [0]       (not in version 1)
//         serialNumber         INTEGER
//         signature            SEQUENCE
//         issuer               SEQUENCE  (Name)
//         validity             SEQUENCE
//         subject              SEQUENCE  (Name)
//         subjectPublicKeyInfo SEQUENCE {
//             algorithm        SEQUENCE
//             subjectPublicKey BIT STRING, which holds an RSAPublicKey: SEQUENCE { INTEGER modulus, INTEGER exponent }
//         }
//         unique identifiers and extensions: not read
//     }
//     signatureAlgorithm SEQUENCE { OBJECT IDENTIFIER, parameters }
//     signature          BIT STRING
// }
//
// Name ::= SEQUENCE of SET of SEQUENCE { OBJECT IDENTIFIER type, value }

constexpr std::string_view kCommonNameType = "\x55\x04\x03";  // 2.5.4.3

std::string_view withoutZerosInFront(std::string_view bytes) {
    bytes.remove_prefix(std::min(bytes.find_first_not_of('\0'), bytes.size()));
    return bytes;
}

// The element, header and all, that was taken from the front of before and left after. One that is cut off has taken
// all there was: no signature is left for it then.
std::string_view takenFrom(std::string_view before, std::string_view after) {
    return withoutZerosInFront(before.substr(0, before.size() - after.size()));
}

// The algorithm is not looked at: whatever reads like an RSA key is one.
void readPublicKey(std::string_view info, Certificate& certificate) {
    takeElement(kDerSequence, info);  // algorithm
    std::string_view bits = takeElement(kDerBitString, info);
    std::string_view key = takeElement(kDerSequence, bits);
    certificate.modulus = withoutZerosInFront(takeElement(kDerInteger, key));
    certificate.exponent = withoutZerosInFront(takeElement(kDerInteger, key));
}

void readSignedFields(std::string_view fields, Certificate& certificate) {
    takeElement(kDerVersion, fields);   // left where it is when it is something else: version 1 has none
    takeElement(kDerInteger, fields);   // serialNumber
    takeElement(kDerSequence, fields);  // signature, which the outer signatureAlgorithm repeats
    certificate.issuer = takeElement(kDerSequence, fields);
    takeElement(kDerSequence, fields);  // validity
    certificate.subject = takeElement(kDerSequence, fields);
    certificate.commonName = commonName(certificate.subject);
    readPublicKey(takeElement(kDerSequence, fields), certificate);
}

bool isTextType(uint8_t tag) {
    return tag == kDerUtf8String || tag == kDerPrintableString || tag == kDerT61String;
}

}  // namespace

Certificate parseCertificate(std::string_view der) {
    Certificate certificate;
    std::string_view parts = takeElement(kDerSequence, der);
    const std::string_view allParts = parts;
    readSignedFields(takeElement(kDerSequence, parts), certificate);
    certificate.signedBytes = takenFrom(allParts, parts);

    std::string_view algorithm = takeElement(kDerSequence, parts);
    certificate.signatureAlgorithm = takeElement(kDerObjectIdentifier, algorithm);
    certificate.signature = withoutZerosInFront(takeElement(kDerBitString, parts));

    if (LogsLevel(9)) WriteLog(9, "domain1=", HexText(certificate.commonName));
    return certificate;
}

std::string_view commonName(std::string_view name) {
    std::string_view result;
    size_t lengthBefore = 0;
    // An empty set is a set, too: there is none left when nothing goes away any more.
    do {
        lengthBefore = name.size();
        std::string_view attributes = takeElement(kDerSet, name);
        std::string_view attribute = takeElement(kDerSequence, attributes);
        if (takeElement(kDerObjectIdentifier, attribute) != kCommonNameType) continue;
        const StringValue value = readStringValue(attribute);
        if (isTextType(value.tag)) result = value.content;
    } while (name.size() < lengthBefore);
    return result;
}

}  // namespace velmora
