#include "tools/pbxsim/identity.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <system_error>

#include "crypto/certificate.h"
#include "crypto/der.h"
#include "crypto/rsa_private_key.h"
#include "crypto/trust_store.h"
#include "tools/pbxsim/summary.h"

namespace velmora::pbxsim {
namespace {

constexpr std::string_view kPemStart = "-----BEGIN ";

struct FileCloser {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

ByteString ReadFile(const ByteString& path, ByteString& fault) {
    ByteString bytes;
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    bool failed = file == nullptr;
    char part[4096];
    while (!failed) {
        const size_t count = std::fread(part, 1, sizeof(part), file.get());
        bytes.append(part, count);
        if (count > 0) continue;
        if (std::ferror(file.get()) == 0) return bytes;
        failed = true;
    }
    fault = path + " cannot be read: " + std::generic_category().message(errno);
    return {};
}

ByteString InQuotes(const ByteString& path) {
    return "\"" + path + "\"";
}

// The certificates in the content of a file; fault tells when it holds anything else.
std::vector<ByteString> CutCertificates(const ByteString& path, const ByteString& content, ByteString& fault) {
    const ByteString wrongContent = path + " does not consist of certificates with RSA keys, in DER";
    if (content.find(kPemStart) != ByteString::npos) {
        fault =
            path + " is in PEM, and DER is needed: openssl x509 -in " + InQuotes(path) + " -outform DER -out cert.der";
        return {};
    }
    std::vector<ByteString> certificates;
    for (std::string_view left = content; fault.empty() && !left.empty();) {
        const std::string_view before = left;
        takeElement(kDerSequence, left);
        certificates.emplace_back(before.substr(0, before.size() - left.size()));
        if (parseCertificate(certificates.back()).modulus.empty()) fault = wrongContent;
    }
    if (certificates.empty()) fault = wrongContent;
    return certificates;
}

// What keeps the content of a file from being the private key; empty when nothing does.
ByteString KeyFault(const ByteString& path, const ByteString& content) {
    const ByteString conversion = "openssl rsa -in " + InQuotes(path) + " -traditional -outform DER -out key.der";
    if (content.find(kPemStart) != ByteString::npos) {
        return path + " is in PEM, and DER is needed: " + conversion;
    }
    if (readRsaPrivateKey(content).modulus.empty()) {
        return path + " is no RSAPrivateKey in DER. If it holds an RSA key in another form: " + conversion;
    }
    return {};
}

ByteString WithoutZerosInFront(const ByteString& number) {
    return number.substr(std::min(number.find_first_not_of('\0'), number.size()));
}

}  // namespace

Identity LoadIdentity(const ByteString& certificateFile, const ByteString& keyFile, ByteString& fault) {
    Identity identity;
    const ByteString certificates = ReadFile(certificateFile, fault);
    if (fault.empty()) identity.certificates = CutCertificates(certificateFile, certificates, fault);
    if (fault.empty()) identity.privateKey = ReadFile(keyFile, fault);
    if (fault.empty()) fault = KeyFault(keyFile, identity.privateKey);
    if (!fault.empty()) return {};

    const ByteString keyModulus = WithoutZerosInFront(readRsaPrivateKey(identity.privateKey).modulus);
    if (parseCertificate(identity.certificates.front()).modulus == keyModulus) return identity;
    fault = "the key in " + keyFile + " is not that of the certificate in " + certificateFile + ": their moduli differ";
    return {};
}

ByteString CommonNameOf(const Identity& identity) {
    return OneLine(ByteString(parseCertificate(identity.certificates.front()).commonName));
}

void UseIdentity(const Identity& identity) {
    setOwnCertificate(identity.certificates, identity.privateKey);
}

}  // namespace velmora::pbxsim
