#pragma once

#include <string_view>

namespace velmora {

// A reader of X.509 certificates (RFC 5280, section 4.1) in DER. What it gives are views into the bytes that the caller
// holds. It never fails: what is missing or malformed reads as empty.

// What of a certificate matters here. Its dates and extensions do not: they are never read.
struct Certificate {
    std::string_view signedBytes;         // the whole tbsCertificate: tag, length and content
    std::string_view issuer;              // content of a Name
    std::string_view subject;             // content of a Name
    std::string_view commonName;          // the subject's
    std::string_view modulus;             // of an RSA key: big-endian, without zero bytes at its start
    std::string_view exponent;            // likewise
    std::string_view signatureAlgorithm;  // content of an object identifier
    std::string_view signature;           // big-endian, without zero bytes at its start
};

// Reads a certificate of any version. The trace log has "domain1=" and the subject's common name in hexadecimal, at
// level 9.
//
// A key of another kind than RSA has no modulus and no exponent.
Certificate parseCertificate(std::string_view der);

// The common name in the content of a Name: the last one, if there are several. Empty when there is none.
//
// Only UTF8String, PrintableString and T61String count, and their bytes stay as they are; a name of another type, such
// as BMPString, is passed over. So is one that is not the first attribute of its set. Keep both.
std::string_view commonName(std::string_view name);

}  // namespace velmora
