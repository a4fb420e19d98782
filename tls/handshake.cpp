#include "config/big_endian.h"
#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "tls/constant_time.h"
#include "tls/tls_connection.h"
#include "tls/wire.h"

// What both ends do with handshake messages (RFC 2246, section 7.4).
//
//   byte  0     type
//   bytes 1-3   length of what follows
//   bytes 4-    the body

namespace velmora {
namespace {

constexpr int32_t kHandshakeLogLevel = 9;
constexpr size_t kLoggedSessionIdBytes = 4;

}  // namespace

// Messages and records need not begin or end together. After an alert of ours no further message is looked at, even if
// it has come in the same record.
void TlsConnection::ProcessHandshakeRecord(std::string_view body) {
    handshakeBuffer += body;
    size_t position = 0;
    while (!failed) {
        const std::string_view left = std::string_view(handshakeBuffer).substr(position);
        if (left.size() < kHandshakeHeaderBytes) break;
        const size_t messageBytes = kHandshakeHeaderBytes + ReadBigEndian(left.substr(1, 3));
        if (left.size() < messageBytes) break;
        position += messageBytes;
        ProcessHandshake(left.substr(0, messageBytes));
    }
    // Swapped, neither erased nor assigned: a buffer that had to hold 16 MB once gives them back.
    if (position > 0) handshakeBuffer.substr(position).swap(handshakeBuffer);
}

void TlsConnection::ProcessHandshake(std::string_view message) {
    const auto type = static_cast<HandshakeType>(message[0]);
    const std::string_view body = message.substr(kHandshakeHeaderBytes);
    if (type != HandshakeType::kHelloRequest && type != HandshakeType::kFinished) transcript.Append(message);
    switch (type) {
        case HandshakeType::kHelloRequest:
            return LogHandshake("ProcessHelloRequest", body);
        case HandshakeType::kClientHello:
            return ProcessClientHello(body);
        case HandshakeType::kServerHello:
            return ProcessServerHello(body);
        case HandshakeType::kCertificate:
            return ProcessCertificate(body);
        // The key for the exchange is the certificate's, whatever the server sends here.
        case HandshakeType::kServerKeyExchange:
            return LogHandshake("ProcessServerKeyExchange", body);
        case HandshakeType::kCertificateRequest:
            return ProcessCertificateRequest(body);
        case HandshakeType::kServerHelloDone:
            return ProcessServerHelloDone(body);
        // A client's signature proves nothing to a server that lets every client in.
        case HandshakeType::kCertificateVerify:
            return LogHandshake("ProcessCertificateVerify", body);
        case HandshakeType::kClientKeyExchange:
            return ProcessClientKeyExchange(body);
        case HandshakeType::kFinished:
            ProcessFinished(body);
            transcript.Append(message);
            if (sendFinishedAfterPeers) SendFinished();
            return;
    }
    Log(6, {"Ignoring handshake type ", DecimalText(static_cast<uint8_t>(type))});
}

void TlsConnection::SendHandshake(std::string_view step, HandshakeType type, std::string_view body) {
    LogHandshake(step, body);
    WireWriter message;
    message.U8(static_cast<uint8_t>(type)).Bytes24(body);
    transcript.Append(message.Written());
    WriteRecord(RecordType::kHandshake, message.Written());
}

// The handshake counts as complete before the proof is looked at, and goes on counting so when it is wrong. Keep.
void TlsConnection::ProcessFinished(std::string_view body) {
    LogHandshake("ProcessFinished", body);
    handshakeComplete = true;
    const Endpoint peer = self == Endpoint::kClient ? Endpoint::kServer : Endpoint::kClient;
    if (EqualInConstantTime(body, VerifyData(protocolVersion, masterSecret, peer, transcript))) return;
    Log(3, {"Finished failed"});
    SendAlert(Alert::kDecryptionFailed, AlertLevel::kFatal);
}

void TlsConnection::SendFinished() {
    SendHandshake("SendFinished", HandshakeType::kFinished,
                  VerifyData(protocolVersion, masterSecret, self, transcript));
    sendFinishedAfterPeers = false;
}

void TlsConnection::LogHandshake(std::string_view step, std::string_view value) const {
    if (!LogsLevel(kHandshakeLogLevel)) return;
    WriteLog(kHandshakeLogLevel, HandshakeLogHead().append(step), "(" + HexText(value) + ")");
}

void TlsConnection::LogHandshakeText(std::initializer_list<std::string_view> pieces) const {
    if (!LogsLevel(kHandshakeLogLevel)) return;
    ByteString text = HandshakeLogHead();
    for (const std::string_view piece : pieces) text += piece;
    WriteLog(kHandshakeLogLevel, text);
}

ByteString TlsConnection::HandshakeLogHead() const {
    if (sessionId.empty()) return logPrefix;
    return logPrefix + "[" + HexText(std::string_view(sessionId).substr(0, kLoggedSessionIdBytes)) + "]";
}

}  // namespace velmora
