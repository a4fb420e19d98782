#include <memory>
#include <optional>
#include <utility>

#include "config/big_endian.h"
#include "config/text_numbers.h"
#include "config/trace_log.h"
#include "tls/tls_connection.h"

// Records (RFC 2246, section 6.2) and alerts (section 7.2).
//
//   byte  0     type
//   bytes 1-2   version: that of the connection; not looked at on receipt
//   bytes 3-4   length of what follows; on receipt, any
//   bytes 5-    the fragment

namespace velmora {
namespace {

// What may wait for the end of a handshake. A peer that never ends it can still have its owner send something.
constexpr size_t kPendingMaxBytes = 1048576;

}  // namespace

// Built anew in place: to move a new object in takes 10 KB of code.
void TlsConnection::Reset() {
    ByteString keptSessionId = std::move(sessionId);
    ByteString keptMasterSecret = std::move(masterSecret);
    std::destroy_at(this);
    std::construct_at(this);
    sessionId = std::move(keptSessionId);
    masterSecret = std::move(keptMasterSecret);
}

ByteString TlsConnection::Feed(std::string_view received) {
    if (failed) return {};
    inputBuffer += received;
    size_t position = 0;
    while (!failed) {
        const std::string_view left = std::string_view(inputBuffer).substr(position);
        if (left.size() < kRecordHeaderBytes) break;
        const size_t fragmentBytes = ReadBigEndian(left.substr(3, 2));
        if (left.size() < kRecordHeaderBytes + fragmentBytes) break;
        position += kRecordHeaderBytes + fragmentBytes;
        ReadRecord(static_cast<RecordType>(left[0]), ByteString(left.substr(kRecordHeaderBytes, fragmentBytes)));
    }
    inputBuffer.erase(0, failed ? ByteString::npos : position);
    return std::exchange(receivedPlaintext, {});
}

// Nothing sends what is pending when the handshake completes: it waits for the next call. Keep. An owner calls after
// each Feed.
ByteString TlsConnection::Send(std::string_view plaintext) {
    const bool ready = handshakeComplete && cipherKind != CipherKind::kNone;
    if (ready || pendingPlaintext.size() + plaintext.size() <= kPendingMaxBytes) {
        pendingPlaintext += plaintext;
    } else {
        Log(1, {"Too much waits for the end of the handshake: dropped what was to be sent"});
    }
    if (ready) {
        WriteRecord(RecordType::kApplicationData, pendingPlaintext);
        pendingPlaintext.clear();
    }
    return std::exchange(outputBuffer, {});
}

void TlsConnection::ReadRecord(RecordType type, ByteString body) {
    if (readProtected) {
        std::optional<ByteString> content = readProtection.Unprotect(type, protocolVersion, body);
        if (!content) {
            Log(3, {"Bad Record Mac"});
            SendAlert(Alert::kBadRecordMac, AlertLevel::kFatal);
            return;
        }
        body = *std::move(content);
    }
    switch (type) {
        case RecordType::kChangeCipherSpec:
            return ProcessChangeCipherSpec(body);
        case RecordType::kAlert:
            return ProcessAlert(body);
        case RecordType::kHandshake:
            return ProcessHandshakeRecord(body);
        case RecordType::kApplicationData:
            if (receivedPlaintext.empty()) {
                receivedPlaintext = std::move(body);
            } else {
                receivedPlaintext += body;
            }
            return;
    }
    Log(5, {"Received unknown type ", DecimalText(static_cast<uint8_t>(type)), " on record layer"});
}

void TlsConnection::WriteRecord(RecordType type, std::string_view data) {
    // A peer that starts with anything but a hello is answered in TLS 1.0.
    if (protocolVersion == 0) protocolVersion = kTls10;
    while (!data.empty()) {
        const std::string_view content = data.substr(0, kFragmentMaxBytes);
        data.remove_prefix(content.size());
        const ByteString fragment =
            writeProtected ? writeProtection.Protect(type, protocolVersion, content) : ByteString(content);
        AppendBigEndian(outputBuffer, static_cast<uint8_t>(type), 1);
        AppendBigEndian(outputBuffer, protocolVersion, 2);
        AppendBigEndian(outputBuffer, fragment.size(), 2);
        outputBuffer += fragment;
    }
}

void TlsConnection::SendAlert(Alert description, AlertLevel level) {
    const ByteString alert = {static_cast<char>(level), static_cast<char>(description)};
    LogHandshake("SendAlert", alert);
    WriteRecord(RecordType::kAlert, alert);
    if (description == Alert::kCloseNotify && level == AlertLevel::kWarning) {
        closeSent = true;
    } else {
        failed = true;
    }
}

// Not even a fatal alert ends anything here: what the peer sends behind it is still worked off. Keep.
void TlsConnection::ProcessAlert(std::string_view body) {
    if (body.size() < kAlertBytes) return;
    const auto level = static_cast<AlertLevel>(body[0]);
    const auto description = static_cast<Alert>(body[1]);
    if (level == AlertLevel::kWarning && description == Alert::kCloseNotify) {
        Log(8, {"Received closure alert"});
        if (!closeSent) SendAlert(Alert::kCloseNotify, AlertLevel::kWarning);
        return;
    }
    peerAlertReceived = true;
    Log(5, {"Alert(", DecimalText(body[0] & 0xFF), ", ", DecimalText(body[1] & 0xFF), ")"});
}

void TlsConnection::Log(int32_t level, std::initializer_list<std::string_view> pieces) const {
    if (!LogsLevel(level)) return;
    ByteString text = logPrefix;
    for (const std::string_view piece : pieces) text += piece;
    WriteLog(level, text);
}

}  // namespace velmora
