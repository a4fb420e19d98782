#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "config/byte_string.h"
#include "crypto/certificate_chain.h"
#include "crypto/rsa.h"
#include "tls/cipher_suite.h"
#include "tls/key_derivation.h"
#include "tls/protocol.h"
#include "tls/record_protection.h"
#include "tls/transcript.h"

namespace velmora {

// One end of a TLS connection over byte buffers: bytes in, bytes out. No socket, no thread, no lock: the owner decides
// which lock covers a call. A client speaks TLS 1.0, a server SSL 3.0 as well; the key exchange is RSA.
// A client that gets a ClientHello answers it as a server would. Keep.
//
// The owner of a client sets the log prefix, the domain and verifyCertificates and calls StartClientHandshake; a server
// waits for the peer's ClientHello. Either then gives Feed what comes from the socket, and writes to the socket what
// Send returns: Send with its data, and Send with nothing after each Feed.
//
// Messages are not checked against the state of the handshake: each is processed whenever it arrives. Keep.
class TlsConnection {
public:
    // Whether the name in the peer's certificate, and the signatures of its chain, are looked at. A wrong name ends the
    // connection. So does a wrong signature, since a chain that is not verified has neither name nor key.
    bool verifyCertificates = true;

    // Whether a server stores its sessions in the sessionCache and resumes them.
    bool resumeSessions = false;

    // What every log record starts with.
    void SetLogPrefix(const ByteString& prefix) { logPrefix = prefix; }

    // The name that the server's certificate must have when certificates are verified; a client asks the server for it
    // (RFC 6066, section 3). Empty: any.
    void SetExpectedDomain(const ByteString& domain) { expectedDomain = domain; }

    // Puts everything back to where a new object starts, but for the session ID and the master secret, with which the
    // next handshake may resume the session.
    void Reset();

    // Makes this end the client and prepares the ClientHello, which leaves with the next Send. Of an earlier handshake
    // on the same object nothing is forgotten: that is Reset's.
    void StartClientHandshake();

    // Takes received bytes, however they were cut, works off every whole record, and returns the application data that
    // has come in (often none). Once an alert of ours has ended the connection, it drops what it is given.
    ByteString Feed(std::string_view received);

    // Takes application data (often none) and returns the bytes to write to the socket now. Data given before the
    // handshake is complete waits and leaves with the first Send after it; what would make more than 1 MiB wait is
    // dropped, and the trace log says so.
    ByteString Send(std::string_view plaintext);

    // The peer's Finished has arrived. It may have been a wrong one: then Failed is true as well.
    bool HandshakeComplete() const { return handshakeComplete; }

    // An alert of ours has ended the connection.
    bool Failed() const { return failed; }

    // The peer has sent an alert other than the one that closes a connection.
    bool PeerAlertReceived() const { return peerAlertReceived; }

    // The suite that the handshake has chosen. Without a cipher before that, and for one that we do not know.
    const CipherSuite& Suite() const { return suite; }

    // The version that this end speaks; 0 before it is fixed.
    uint16_t ProtocolVersion() const { return protocolVersion; }

    // The certificate for the key exchange: a client's is the peer's, a server's its own, until a
    // client sends one. Empty before it is known.
    const CertificateChain& KeyExchangeCertificate() const { return keyExchangeCertificate; }

private:
    // record_layer.cpp
    void ReadRecord(RecordType type, ByteString body);
    void WriteRecord(RecordType type, std::string_view data);
    void SendAlert(Alert description, AlertLevel level);
    void ProcessAlert(std::string_view body);
    void Log(int32_t level, std::initializer_list<std::string_view> pieces) const;

    // handshake.cpp
    void ProcessHandshakeRecord(std::string_view body);
    void ProcessHandshake(std::string_view message);
    void SendHandshake(std::string_view step, HandshakeType type, std::string_view body);
    void ProcessFinished(std::string_view body);
    void SendFinished();
    void LogHandshake(std::string_view step, std::string_view value) const;
    void LogHandshakeText(std::initializer_list<std::string_view> pieces) const;
    ByteString HandshakeLogHead() const;

    // change_cipher_spec.cpp
    void SendChangeCipherSpec();
    void ProcessChangeCipherSpec(std::string_view body);
    void PerformChangeCipherSpec();
    void TakePreMasterSecret(const ByteString& preMaster);

    // client_handshake.cpp
    void ProcessServerHello(std::string_view body);
    void ProcessCertificateRequest(std::string_view body);
    void ProcessServerHelloDone(std::string_view body);
    void SendClientCertificate();
    void SendClientKeyExchange();
    void SendCertificateVerify();

    // certificate_check.cpp
    void ProcessCertificate(std::string_view body);
    bool NamesExpectedDomain(const CertificateChain& certificate) const;

    // server_handshake.cpp
    void ProcessClientHello(std::string_view body);
    bool ResumeSession();
    bool ChooseSuite(std::string_view offered);
    void SendServerHello();
    void SendServerCertificate();
    void ProcessClientKeyExchange(std::string_view body);

    ByteString logPrefix;
    ByteString expectedDomain;

    ByteString inputBuffer;        // received, not yet a whole record
    ByteString pendingPlaintext;   // to be sent once the handshake is complete
    ByteString outputBuffer;       // records to be written to the socket
    ByteString receivedPlaintext;  // application data not yet handed to the owner

    Endpoint self = Endpoint::kServer;
    uint16_t protocolVersion = 0;               // 0 until a hello fixes it
    CipherSuite suite;                          // the one chosen; none until a hello names it
    CipherKind cipherKind = CipherKind::kNone;  // of the protection set up last
    RecordProtection readProtection;
    RecordProtection writeProtection;
    bool readProtected = false;   // the peer has changed to readProtection
    bool writeProtected = false;  // we have changed to writeProtection

    ByteString handshakeBuffer;  // received, not yet a whole message
    Transcript transcript;
    ByteString sessionId;     // at most 255 bytes; empty: none
    ByteString clientRandom;  // 32 bytes, as is the next
    ByteString serverRandom;
    ByteString masterSecret;  // 48 bytes
    CertificateChain keyExchangeCertificate;
    RsaKey privateKey;              // of a server
    ByteString certificateRequest;  // the body of the server's; empty: none
    bool sendFinishedAfterPeers = true;
    bool handshakeComplete = false;
    bool failed = false;
    bool peerAlertReceived = false;
    bool closeSent = false;
};

}  // namespace velmora
