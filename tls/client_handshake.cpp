#include <algorithm>
#include <string_view>

#include "config/ascii_case.h"
#include "crypto/certificate.h"
#include "crypto/der.h"
#include "crypto/random.h"
#include "crypto/trust_store.h"
#include "tls/tls_connection.h"
#include "tls/wire.h"

// The client's side of the handshake (RFC 2246, section 7.4).

namespace velmora {
namespace {

constexpr uint16_t kServerNameExtension = 0;  // RFC 6066, section 3
constexpr uint8_t kHostName = 0;              // its one kind of name
constexpr size_t kHostNameMaxBytes = 65526;   // what leaves room for the lengths around it
constexpr uint8_t kRsaSign = 1;               // the client certificate type (RFC 2246, 7.4.4)

ByteString OfferedSuites() {
    WireWriter suites;
    for (const CipherSuite& suite : kCipherSuites) suites.U16(suite.number);
    return suites.Written();
}

// The extension block with the server's name; nothing at all for a name that is empty, or longer than can be said.
ByteString ServerNameExtension(const ByteString& domain) {
    if (domain.empty() || domain.size() > kHostNameMaxBytes) return {};
    const ByteString name = WireWriter().U8(kHostName).Bytes16(domain).Written();
    const ByteString list = WireWriter().Bytes16(name).Written();
    return WireWriter().Bytes16(WireWriter().U16(kServerNameExtension).Bytes16(list).Written()).Written();
}

// A padding byte is neither 0, which would end the padding, nor 0xFF. Keep.
ByteString RandomPadding(size_t count) {
    ByteString padding;
    while (padding.size() < count) {
        for (const char byte : randomBytes(count - padding.size())) {
            if (byte != '\x00' && byte != '\xFF') padding += byte;
        }
    }
    return padding;
}

// A block of type 2 around the secret (RFC 2313, 8.1), as long as the modulus.
ByteString PaddedBlock(const ByteString& secret, size_t modulusBytes) {
    ByteString block("\x00\x02", 2);
    block += RandomPadding(modulusBytes - secret.size() - 3);
    block += '\0';
    return block + secret;
}

// The number with as many zero bytes in front as it lacks.
ByteString PaddedToLength(const ByteString& number, size_t length) {
    return ByteString(length - std::min(length, number.size()), '\0') + number;
}

// The Name of an authority, as text. A Name is a SEQUENCE.
ByteString AuthorityText(std::string_view authority) {
    return LowerCase(commonName(takeElement(kDerSequence, authority)));
}

}  // namespace

void TlsConnection::StartClientHandshake() {
    self = Endpoint::kClient;
    protocolVersion = kTls10;
    clientRandom = randomBytes(kRandomBytes);
    WireWriter hello;
    hello.U16(protocolVersion)
        .Bytes(clientRandom)
        .Bytes8(sessionId)
        .Bytes16(OfferedSuites())
        .U8(1)
        .U8(kNullCompression)
        .Bytes(ServerNameExtension(expectedDomain));
    SendHandshake("SendClientHello", HandshakeType::kClientHello, hello.Written());
}

// The suite is taken as it comes, offered or not, and a version above TLS 1.0 changes nothing: the connection goes on
// in TLS 1.0. Keep both. The compression method and any extensions behind the suite are not looked at.
void TlsConnection::ProcessServerHello(std::string_view body) {
    LogHandshake("ProcessServerHello", body);
    WireReader reader(body);
    if (reader.U16() < kTls10) return SendAlert(Alert::kProtocolVersion, AlertLevel::kFatal);
    serverRandom = reader.Bytes(kRandomBytes);
    sessionId = reader.Bytes(reader.U8());
    suite = FindCipherSuite(reader.U16());
}

void TlsConnection::ProcessCertificateRequest(std::string_view body) {
    LogHandshake("ProcessCertificateRequest", body);
    certificateRequest = body;
}

void TlsConnection::ProcessServerHelloDone(std::string_view body) {
    LogHandshake("ProcessServerHelloDone", body);
    if (!certificateRequest.empty()) SendClientCertificate();
    if (suite.IsKnown()) SendClientKeyExchange();
    if (failed) return;
    if (!certificateRequest.empty()) SendCertificateVerify();
    certificateRequest.clear();
    SendChangeCipherSpec();
    PerformChangeCipherSpec();
    SendFinished();
}

// The request (RFC 2246, 7.4.4): the certificate types behind a length of one byte; the authorities behind one of two
// bytes, each a Name behind its own. It is answered with our chain if an authority is the one that issued it, and with
// an empty list if not.
void TlsConnection::SendClientCertificate() {
    const CertificateChain& own = ownCertificate();
    const ByteString issuer = LowerCase(commonName(own.issuerName));
    WireReader request(certificateRequest);
    const ByteString types = request.Bytes(request.U8());
    const ByteString authorities = request.Bytes(request.U16());

    bool answered = false;
    for (const char type : types) {
        if (type != kRsaSign) continue;
        for (WireReader reader(authorities); reader.Rest().size() >= 2;) {
            const ByteString authority = AuthorityText(reader.Bytes(reader.U16()));
            if (authority == issuer) {
                answered = true;
            } else {
                LogHandshakeText({"Certificate request from ", authority, " could not be answered"});
            }
        }
    }
    WireWriter list;
    if (answered) {
        for (const ByteString& certificate : own.certificates) list.Bytes24(certificate);
    }
    if (list.Written().empty()) certificateRequest.clear();
    SendHandshake("SendCertificate", HandshakeType::kCertificate, WireWriter().Bytes24(list.Written()).Written());
}

void TlsConnection::SendClientKeyExchange() {
    const ByteString& modulus = keyExchangeCertificate.modulus;
    const ByteString& exponent = keyExchangeCertificate.exponent;
    // No certificate has come, or the end was made a server by a ClientHello and its own key is too short.
    if (modulus.size() < kModulusMinBytes) return SendAlert(Alert::kUnsupportedCertificate, AlertLevel::kFatal);
    LogHandshake("RSA N", modulus);
    LogHandshake("RSA E", exponent);

    const ByteString preMaster =
        WireWriter().U16(protocolVersion).Bytes(randomBytes(kPreMasterSecretBytes - 2)).Written();
    LogHandshake("Pre Master Secret", preMaster);
    const ByteString block = PaddedBlock(preMaster, modulus.size());
    LogHandshake("Block Padded", block);
    RsaKey key;
    setPublicKey(key, exponent, modulus);
    const ByteString encrypted = PaddedToLength(rsaPublic(key, block), modulus.size());
    LogHandshake("Encrypted Pre Master", encrypted);
    TakePreMasterSecret(preMaster);
    SendHandshake("SendClientKeyExchange", HandshakeType::kClientKeyExchange,
                  WireWriter().Bytes16(encrypted).Written());
}

void TlsConnection::SendCertificateVerify() {
    const CertificateChain& own = ownCertificate();
    RsaKey key;
    setPrivateKey(key, own.keyPrivateExponent, own.keyPublicExponent, own.keyModulus, own.keyPrime1, own.keyPrime2);
    const ByteString signature = rsaSign(key, transcript.md5.digest() + transcript.sha1.digest());
    SendHandshake("SendCertificateVerify", HandshakeType::kCertificateVerify,
                  WireWriter().Bytes16(PaddedToLength(signature, own.modulus.size())).Written());
}

}  // namespace velmora
