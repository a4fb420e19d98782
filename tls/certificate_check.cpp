#include <utility>
#include <vector>

#include "config/ascii_case.h"
#include "config/text_numbers.h"
#include "tls/tls_connection.h"
#include "tls/wire.h"

// The peer's certificate (RFC 2246, section 7.4.2): its name, if that is wanted, and its key.

namespace velmora {
namespace {

constexpr size_t kExponentMaxBytes = 4;

// Nobody has keys of more than 16,384 bits, with which the exchange would take its time, or chains of so many
// certificates: a list of empty ones could take hundreds of megabytes.
constexpr size_t kModulusMaxBytes = 2048;
constexpr size_t kCertificatesMax = 100;

// Ends one beyond the limit.
std::vector<ByteString> ReadCertificateList(std::string_view body) {
    WireReader message(body);
    const ByteString list = message.Bytes(message.U24());
    std::vector<ByteString> certificates;
    WireReader reader(list);
    while (!reader.Rest().empty() && certificates.size() <= kCertificatesMax) {
        certificates.push_back(reader.Bytes(reader.U24()));
    }
    return certificates;
}

bool IsUsableKey(const CertificateChain& certificate) {
    return certificate.modulus.size() >= kModulusMinBytes && certificate.modulus.size() <= kModulusMaxBytes &&
           !certificate.exponent.empty() && certificate.exponent.size() <= kExponentMaxBytes;
}

// "*.example" stands for "example" itself, and for names of any depth below it. Keep.
bool NameMatches(const ByteString& name, const ByteString& domain) {
    if (name == domain) return true;
    return name.starts_with("*.") && (domain == name.substr(2) || domain.ends_with(name.substr(1)));
}

}  // namespace

void TlsConnection::ProcessCertificate(std::string_view body) {
    LogHandshake("ProcessCertificate", body);
    std::vector<ByteString> certificates = ReadCertificateList(body);
    LogHandshakeText({"Received ", DecimalText(static_cast<int64_t>(certificates.size())), " certificates"});
    if (certificates.empty()) return SendAlert(Alert::kUnknownCa, AlertLevel::kFatal);
    if (certificates.size() > kCertificatesMax) return SendAlert(Alert::kUnsupportedCertificate, AlertLevel::kFatal);

    CertificateChain certificate(std::move(certificates), verifyCertificates ? "" : kSkipVerification);
    if (!verifyCertificates) {
        LogHandshakeText({"Don't verify certificates"});
    } else if (!NamesExpectedDomain(certificate)) {
        return SendAlert(Alert::kCertificateUnknown, AlertLevel::kFatal);
    }
    LogHandshake("Rsa N", certificate.modulus);
    LogHandshake("Rsa E", certificate.exponent);
    if (!IsUsableKey(certificate)) return SendAlert(Alert::kUnsupportedCertificate, AlertLevel::kFatal);
    keyExchangeCertificate = std::move(certificate);
}

bool TlsConnection::NamesExpectedDomain(const CertificateChain& certificate) const {
    if (expectedDomain.empty()) return true;
    if (NameMatches(LowerCase(certificate.commonName), LowerCase(expectedDomain))) return true;
    if (!certificate.commonName.empty()) {
        Log(4, {"Expecting domain ", expectedDomain, ", but received ", certificate.commonName, " in certificate"});
    }
    return false;
}

}  // namespace velmora
