#include "tests/interop/openssl_peer.h"

#include <openssl/err.h>
#include <openssl/x509.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace velmora::interop {
namespace {

using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

const unsigned char* UnsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

// What must not fail in setting a peer up.
void Must(long result) {
    if (result > 0) return;
    ERR_print_errors_fp(stderr);
    std::abort();
}

Certificate ReadCertificate(const ByteString& der) {
    const unsigned char* position = UnsignedBytes(der);
    Certificate certificate(d2i_X509(nullptr, &position, static_cast<long>(der.size())), X509_free);
    Must(certificate != nullptr ? 1 : 0);
    return certificate;
}

ByteString Encoded(const X509* certificate) {
    if (certificate == nullptr) return {};
    unsigned char* start = nullptr;
    const int length = i2d_X509(certificate, &start);
    ByteString der(reinterpret_cast<char*>(start), static_cast<size_t>(length));
    OPENSSL_free(start);
    return der;
}

}  // namespace

OpenSslPeer::OpenSslPeer(const TlsPeerOptions& peerOptions) : options(peerOptions), context(SSL_CTX_new(TLS_method())) {
    SSL_CTX_set_security_level(context.get(), 0);
    Must(SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION));
    Must(SSL_CTX_set_max_proto_version(context.get(), options.laterVersions ? 0 : TLS1_VERSION));
    Must(SSL_CTX_set_cipher_list(context.get(), (options.suite + ":@SECLEVEL=0").c_str()));
    // Our end knows neither session tickets nor RFC 5746.
    SSL_CTX_set_options(context.get(),
                        SSL_OP_NO_TICKET | SSL_OP_LEGACY_SERVER_CONNECT | SSL_OP_ALLOW_UNSAFE_LEGACY_RENEGOTIATION);
    SSL_CTX_set_session_cache_mode(context.get(), options.resumption ? SSL_SESS_CACHE_SERVER : SSL_SESS_CACHE_OFF);
    Must(SSL_CTX_set_session_id_context(context.get(), UnsignedBytes("velmora"), 7));
    SSL_CTX_set_info_callback(context.get(), OnEvent);
    UseIdentity();
    UseTrusted();
    Restart();
}

void OpenSslPeer::UseIdentity() {
    const TlsIdentity& identity = options.identity;
    if (identity.certificate.empty()) return;
    Must(SSL_CTX_use_certificate_ASN1(context.get(), static_cast<int>(identity.certificate.size()),
                                      UnsignedBytes(identity.certificate)));
    Must(SSL_CTX_use_PrivateKey_ASN1(EVP_PKEY_RSA, context.get(), UnsignedBytes(identity.privateKey),
                                     static_cast<long>(identity.privateKey.size())));
}

void OpenSslPeer::UseTrusted() {
    if (options.trusted.empty()) return;
    const Certificate trusted = ReadCertificate(options.trusted);
    Must(X509_STORE_add_cert(SSL_CTX_get_cert_store(context.get()), trusted.get()));
    Must(SSL_CTX_add_client_CA(context.get(), trusted.get()));
    const int demand = options.demandsCertificate ? SSL_VERIFY_FAIL_IF_NO_PEER_CERT : 0;
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER | demand, nullptr);
}

void OpenSslPeer::Restart() {
    const bool isClient = options.role == PeerRole::kClient;
    if (connection && isClient && options.resumption) session.reset(SSL_get1_session(connection.get()));
    // A connection that ends without a close_notify takes its session along.
    if (connection) SSL_set_shutdown(connection.get(), SSL_SENT_SHUTDOWN | SSL_RECEIVED_SHUTDOWN);
    state = {};
    connection.reset(SSL_new(context.get()));
    SSL* ssl = connection.get();
    SSL_set_app_data(ssl, this);
    SSL_set_bio(ssl, BIO_new(BIO_s_mem()), BIO_new(BIO_s_mem()));
    Must(SSL_set_max_send_fragment(ssl, static_cast<long>(options.fragmentBytes)));
    if (!isClient) return SSL_set_accept_state(ssl);
    SSL_set_connect_state(ssl);
    // OpenSSL's macro for it casts the const away in C's way.
    if (!options.serverName.empty()) {
        Must(SSL_ctrl(ssl, SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, options.serverName.data()));
    }
    if (session) Must(SSL_set_session(ssl, session.get()));
}

ByteString OpenSslPeer::Take(std::string_view fromNetwork) {
    SSL* ssl = connection.get();
    if (!fromNetwork.empty()) BIO_write(SSL_get_rbio(ssl), fromNetwork.data(), static_cast<int>(fromNetwork.size()));
    if (!state.handshakeComplete && !state.failed) state.handshakeComplete = Succeeded(SSL_do_handshake(ssl));
    if (state.handshakeComplete) ReadAll();
    ByteString toNetwork(BIO_ctrl_pending(SSL_get_wbio(ssl)), '\0');
    if (!toNetwork.empty()) BIO_read(SSL_get_wbio(ssl), toNetwork.data(), static_cast<int>(toNetwork.size()));
    return toNetwork;
}

void OpenSslPeer::Write(std::string_view plaintext) {
    if (plaintext.empty()) return;
    Succeeded(SSL_write(connection.get(), plaintext.data(), static_cast<int>(plaintext.size())));
}

void OpenSslPeer::AskForRenegotiation() {
    if (Succeeded(SSL_renegotiate(connection.get()))) Succeeded(SSL_do_handshake(connection.get()));
}

void OpenSslPeer::Close() {
    // 0: the other end's close_notify has not come yet.
    const int result = SSL_shutdown(connection.get());
    if (result < 0) Succeeded(result);
}

TlsPeerState OpenSslPeer::State() const {
    const SSL* ssl = connection.get();
    TlsPeerState current = state;
    current.resumed = SSL_session_reused(ssl) == 1;
    current.version = static_cast<uint16_t>(SSL_version(ssl));
    if (const SSL_CIPHER* cipher = SSL_get_current_cipher(ssl)) current.suite = SSL_CIPHER_get_name(cipher);
    if (const char* name = SSL_get_servername(ssl, TLSEXT_NAMETYPE_host_name)) current.serverName = name;
    current.peerCertificate = Encoded(SSL_get0_peer_certificate(ssl));
    return current;
}

ByteString OpenSslPeer::Read() {
    return std::exchange(state.received, {});
}

void OpenSslPeer::ReadAll() {
    char chunk[16384];
    while (!state.failed && !state.closeReceived) {
        const int count = SSL_read(connection.get(), chunk, sizeof(chunk));
        if (!Succeeded(count)) return;
        state.received.append(chunk, static_cast<size_t>(count));
    }
}

// Also notes the end of the connection. That there is nothing more to read is none.
bool OpenSslPeer::Succeeded(int result) {
    if (result > 0) return true;
    const int error = SSL_get_error(connection.get(), result);
    if (error == SSL_ERROR_ZERO_RETURN) state.closeReceived = true;
    if (error == SSL_ERROR_SSL || error == SSL_ERROR_SYSCALL) {
        state.failed = true;
        const char* reason = ERR_reason_error_string(ERR_peek_error());
        state.failure = reason == nullptr ? "no reason given" : reason;
        ERR_clear_error();
    }
    return false;
}

void OpenSslPeer::OnEvent(const SSL* connection, int where, int value) {
    auto* peer = static_cast<OpenSslPeer*>(SSL_get_app_data(connection));
    const int description = value & 0xFF;
    if ((where & SSL_CB_READ_ALERT) == SSL_CB_READ_ALERT && description != SSL_AD_CLOSE_NOTIFY) {
        peer->state.alertReceived = description;
    }
}

}  // namespace velmora::interop
