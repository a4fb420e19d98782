#pragma once

#include <cstddef>
#include <cstdint>

namespace velmora {

// The numbers of SSL 3.0 (RFC 6101) and TLS 1.0 (RFC 2246).

// Versions: the major number above the minor one.
inline constexpr uint16_t kSsl30 = 0x0300;
inline constexpr uint16_t kTls10 = 0x0301;

// Records: type, version, length of what follows (RFC 2246, 6.2.1).
inline constexpr size_t kRecordHeaderBytes = 5;
inline constexpr size_t kFragmentMaxBytes = 16384;  // plaintext in one record

enum class RecordType : uint8_t {
    kChangeCipherSpec = 20,
    kAlert = 21,
    kHandshake = 22,
    kApplicationData = 23,
};

// Handshake messages: type, length of what follows in three bytes (RFC 2246, 7.4).
inline constexpr size_t kHandshakeHeaderBytes = 4;
inline constexpr size_t kRandomBytes = 32;
inline constexpr size_t kSessionIdBytes = 32;  // of those that we draw
inline constexpr size_t kPreMasterSecretBytes = 48;
inline constexpr size_t kModulusMinBytes = kPreMasterSecretBytes + 3;  // of a key that can encrypt that secret
inline constexpr size_t kMasterSecretBytes = 48;
inline constexpr uint8_t kNullCompression = 0;

enum class HandshakeType : uint8_t {
    kHelloRequest = 0,
    kClientHello = 1,
    kServerHello = 2,
    kCertificate = 11,
    kServerKeyExchange = 12,
    kCertificateRequest = 13,
    kServerHelloDone = 14,
    kCertificateVerify = 15,
    kClientKeyExchange = 16,
    kFinished = 20,
};

// Alerts: level, description (RFC 2246, 7.2).
inline constexpr size_t kAlertBytes = 2;

enum class AlertLevel : uint8_t {
    kWarning = 1,
    kFatal = 2,
};

enum class Alert : uint8_t {
    kCloseNotify = 0,
    kBadRecordMac = 20,
    kDecryptionFailed = 21,
    kHandshakeFailure = 40,
    kUnsupportedCertificate = 43,
    kCertificateUnknown = 46,
    kUnknownCa = 48,
    kProtocolVersion = 70,
};

}  // namespace velmora
