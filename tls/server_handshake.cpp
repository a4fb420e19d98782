#include <algorithm>
#include <optional>

#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "crypto/random.h"
#include "crypto/trust_store.h"
#include "tls/session_cache.h"
#include "tls/tls_connection.h"
#include "tls/wire.h"

// The server's side of the handshake (RFC 2246, section 7.4). It asks no client for a certificate.

namespace velmora {
namespace {

ByteString VersionText(uint16_t version) {
    return DecimalText(version >> 8) + "." + DecimalText(version & 0xFF);
}

}  // namespace

// Compression methods and extensions, which follow the suites, are not looked at.
void TlsConnection::ProcessClientHello(std::string_view body) {
    LogHandshake("ProcessClientHello", body);
    WireReader reader(body);
    const uint16_t clientVersion = reader.U16();
    if (clientVersion < kSsl30) {
        Log(7, {"SSL version ", VersionText(clientVersion), " is not supported"});
        return SendAlert(Alert::kProtocolVersion, AlertLevel::kFatal);
    }
    protocolVersion = std::min(clientVersion, kTls10);
    clientRandom = reader.Bytes(kRandomBytes);
    sessionId = reader.Bytes(reader.U8());
    const ByteString offeredSuites = reader.Bytes(reader.U16());

    if (resumeSessions && !sessionId.empty() && ResumeSession()) return;
    if (!ChooseSuite(offeredSuites)) {
        Log(5, {"No common cipher suite in client hello"});
        return SendAlert(Alert::kHandshakeFailure, AlertLevel::kFatal);
    }
    keyExchangeCertificate = ownCertificate();
    const CertificateChain& own = keyExchangeCertificate;
    setPrivateKey(privateKey, own.keyPrivateExponent, own.keyPublicExponent, own.keyModulus, own.keyPrime1,
                  own.keyPrime2);
    if (!expectedDomain.empty()) Log(7, {"Received client hello for domain ", expectedDomain});
    SendServerHello();
    SendServerCertificate();
    SendHandshake("SendHelloDone", HandshakeType::kServerHelloDone, {});
}

// False when the session is not to be resumed; its ID is then no longer the connection's.
bool TlsConnection::ResumeSession() {
    const std::optional<CachedSession> session = sessionCache.Resume(sessionId);
    if (!session) {
        if (LogsLevel(7)) Log(7, {"Session ", HexText(sessionId), " not found"});
        sessionId.clear();
        return false;
    }
    suite = FindCipherSuite(session->cipherSuite);
    masterSecret = session->masterSecret;
    if (LogsLevel(7)) Log(7, {"Resuming session ", HexText(sessionId)});
    SendServerHello();
    SendChangeCipherSpec();
    PerformChangeCipherSpec();
    SendFinished();
    return true;
}

// The client's preference decides.
bool TlsConnection::ChooseSuite(std::string_view offered) {
    for (WireReader reader(offered); !reader.Rest().empty();) {
        const CipherSuite candidate = FindCipherSuite(reader.U16());
        if (!candidate.IsKnown()) continue;
        suite = candidate;
        return true;
    }
    return false;
}

// Every session has an ID, but only one that can be resumed is told to the client.
void TlsConnection::SendServerHello() {
    serverRandom = randomBytes(kRandomBytes);
    if (sessionId.empty()) sessionId = randomBytes(kSessionIdBytes);
    WireWriter hello;
    hello.U16(protocolVersion)
        .Bytes(serverRandom)
        .Bytes8(resumeSessions ? std::string_view(sessionId) : std::string_view())
        .U16(suite.number)
        .U8(kNullCompression);
    SendHandshake("SendServerHello", HandshakeType::kServerHello, hello.Written());
}

void TlsConnection::SendServerCertificate() {
    WireWriter list;
    for (const ByteString& certificate : keyExchangeCertificate.certificates) list.Bytes24(certificate);
    SendHandshake("SendCertificate", HandshakeType::kCertificate, WireWriter().Bytes24(list.Written()).Written());
}

// The secret is at the end of the decrypted block. What stands in front of it is not looked at, so that no answer tells
// a peer whether its padding was right.
void TlsConnection::ProcessClientKeyExchange(std::string_view body) {
    LogHandshake("ProcessClientKeyExchange", body);
    if (!suite.IsKnown()) return Log(1, {"Unknown Cipher"});
    WireReader reader(body);
    // SSL 3.0 has no length in front of the block.
    const ByteString encrypted = reader.Bytes(protocolVersion >= kTls10 ? reader.U16() : body.size());
    const ByteString block = rsaPrivate(privateKey, encrypted);
    const ByteString preMaster = block.substr(block.size() - std::min(block.size(), kPreMasterSecretBytes));
    LogHandshake("Pre Master Secret", preMaster);
    TakePreMasterSecret(preMaster);
    if (resumeSessions && !sessionId.empty()) sessionCache.Store(sessionId, suite.number, masterSecret);
}

}  // namespace velmora
