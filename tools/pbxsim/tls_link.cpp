#include "tools/pbxsim/tls_link.h"

#include <utility>

#include "config/big_endian.h"
#include "config/text_numbers.h"
#include "tls/wire.h"
#include "tools/alert_text.h"

namespace velmora::pbxsim {
namespace {

constexpr char kFrameStart = '\0';  // every frame of plain CSTA starts with it

struct SuiteName {
    CipherSuite suite;
    const char* name;
};

// The names that OpenSSL has for them.
constexpr SuiteName kSuiteNames[] = {
    {kRsaWithAes128Sha, "AES128-SHA"},
    {kRsaWithAes256Sha, "AES256-SHA"},
    {kRsaWithRc4Md5, "RC4-MD5"},
    {kRsaWithRc4Sha, "RC4-SHA"},
};

ByteString SuiteText(const CipherSuite& suite) {
    for (const SuiteName& entry : kSuiteNames) {
        if (entry.suite == suite) return entry.name;
    }
    return "an unknown cipher";
}

// What keeps the first byte of a stream from being TLS; empty when nothing does.
ByteString StartFault(char first) {
    if (first == static_cast<char>(RecordType::kHandshake)) return {};
    if (first == kFrameStart) {
        return "it speaks plain CSTA, but this PBX speaks TLS: set the provider's encrypt to 1, or start this PBX "
               "without --tls";
    }
    return "it does not speak TLS: its first byte is " + DecimalText(static_cast<uint8_t>(first)) +
           ", but that of a handshake is " + DecimalText(static_cast<uint8_t>(RecordType::kHandshake));
}

// Why this end sends an alert in a handshake, as far as one can tell by the alert.
ByteString HandshakeFault(uint8_t description) {
    switch (static_cast<Alert>(description)) {
        case Alert::kHandshakeFailure:
            return "it offers none of the ciphers AES128-SHA, AES256-SHA, RC4-MD5 and RC4-SHA";
        case Alert::kProtocolVersion:
            return "its version is neither SSL 3.0 nor one of TLS";
        default:
            return "it sent a message that has no place there";
    }
}

ByteString FatalAlertRecord(Alert description) {
    WireWriter record;
    record.U8(static_cast<uint8_t>(RecordType::kAlert)).U16(kTls10).U16(kAlertBytes);
    record.U8(static_cast<uint8_t>(AlertLevel::kFatal)).U8(static_cast<uint8_t>(description));
    return record.Written();
}

}  // namespace

TlsLink::TlsLink(Answer givenAnswer) : answer(givenAnswer) {
    tls.SetLogPrefix("CSTA: ");
    tls.verifyCertificates = false;
    tls.resumeSessions = true;
}

ByteString TlsLink::Receive(const ByteString& bytes) {
    if (bytes.empty()) return {};
    if (!std::exchange(started, true)) End(StartFault(bytes[0]));
    if (!endReason.empty()) return {};
    if (answer == Answer::kRefusal) {
        Refuse(bytes);
        return {};
    }
    const bool wasComplete = tls.HandshakeComplete();
    ByteString plaintext = tls.Feed(bytes);
    Collect({});
    if (!announced && tls.HandshakeComplete() && !tls.Failed()) {
        announced = true;
        lines.push_back(CipherLine());
    }
    if (tls.Failed()) End(OwnAlertReason(wasComplete));
    for (const SeenAlert& alert : received.Follow(bytes)) TakeReceivedAlert(alert);
    return plaintext;
}

ByteString TlsLink::Send(const ByteString& plaintext) {
    Collect(plaintext);
    return std::exchange(output, {});
}

std::vector<ByteString> TlsLink::TakeLines() {
    return std::exchange(lines, {});
}

// The whole ClientHello is read first: a socket that is closed with bytes unread takes the alert with it.
void TlsLink::Refuse(const ByteString& bytes) {
    hello += bytes;
    if (hello.size() < kRecordHeaderBytes) return;
    const size_t fragmentBytes = ReadBigEndian(std::string_view(hello).substr(3, 2));
    if (hello.size() < kRecordHeaderBytes + fragmentBytes) return;
    output += FatalAlertRecord(Alert::kHandshakeFailure);
    End("every TLS handshake is refused; sent the alert " + AlertText(static_cast<uint32_t>(Alert::kHandshakeFailure)));
}

void TlsLink::Collect(const ByteString& plaintext) {
    const ByteString bytes = tls.Send(plaintext);
    for (const SeenAlert& alert : sent.Follow(bytes)) sentAlert = alert;
    output += bytes;
}

void TlsLink::TakeReceivedAlert(const SeenAlert& alert) {
    const ByteString during = tls.HandshakeComplete() ? "" : " during the TLS handshake";
    // Of all alerts, only the one that closes TLS does not count as one for TlsConnection.
    const bool closes =
        alert.readable ? alert.description == static_cast<uint8_t>(Alert::kCloseNotify) : !tls.PeerAlertReceived();
    if (closes) return End("it closed TLS" + during + " (close_notify)");
    if (!alert.readable) return End("it sent an alert" + during + ", which is encrypted itself");
    const ByteString text = AlertText(alert.description);
    if (alert.level != static_cast<uint8_t>(AlertLevel::kWarning)) return End("it sent the alert " + text + during);
    lines.push_back("-- TLS warning: it sent the alert " + text);
}

// An alert behind the change of cipher is encrypted, and what it is can only be told by when it was sent.
ByteString TlsLink::OwnAlertReason(bool wasComplete) const {
    if (sentAlert.readable) {
        return "the TLS handshake failed: " + HandshakeFault(sentAlert.description) + "; sent the alert " +
               AlertText(sentAlert.description);
    }
    if (wasComplete) return "what it sent last fails the check of its MAC; sent an alert";
    if (tls.HandshakeComplete()) return "the TLS handshake failed: its Finished message is wrong; sent an alert";
    return "the TLS handshake failed: its first encrypted record fails the check of its MAC; sent an alert";
}

// "-- encrypted: TLS 1.0, AES128-SHA, new session"
ByteString TlsLink::CipherLine() const {
    const ByteString version = tls.ProtocolVersion() == kSsl30 ? "SSL 3.0" : "TLS 1.0";
    // A server needs its certificate only for a session that is not resumed.
    const bool resumed = tls.KeyExchangeCertificate().certificates.empty();
    return "-- encrypted: " + version + ", " + SuiteText(tls.Suite()) +
           (resumed ? ", resumed session" : ", new session");
}

void TlsLink::End(const ByteString& reason) {
    if (endReason.empty()) endReason = reason;
}

}  // namespace velmora::pbxsim
