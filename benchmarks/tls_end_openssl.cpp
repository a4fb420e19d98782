#include <openssl/bio.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <array>

#include "benchmarks/tls_end.h"
#include "tests/support/tls_identity.h"
#include "tls/protocol.h"

namespace velmora {
namespace {

using ContextPointer = std::shared_ptr<SSL_CTX>;

int WriteToWire(BIO* bio, const char* bytes, int count) {
    static_cast<Wire*>(BIO_get_data(bio))->Write(bytes, static_cast<size_t>(count));
    return count;
}

int ReadFromWire(BIO* bio, char* target, int capacity) {
    BIO_clear_retry_flags(bio);
    const size_t count = static_cast<Wire*>(BIO_get_data(bio))->Read(target, static_cast<size_t>(capacity));
    if (count > 0) return static_cast<int>(count);
    BIO_set_retry_read(bio);
    return -1;
}

long ControlWire(BIO* /*bio*/, int command, long /*number*/, void* /*pointer*/) {
    return command == BIO_CTRL_FLUSH ? 1 : 0;
}

BIO* NewWireBio(Wire& wire) {
    static BIO_METHOD* const method = [] {
        BIO_METHOD* created = BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "wire");
        BIO_meth_set_write(created, WriteToWire);
        BIO_meth_set_read(created, ReadFromWire);
        BIO_meth_set_ctrl(created, ControlWire);
        return created;
    }();
    BIO* const bio = BIO_new(method);
    BIO_set_data(bio, &wire);
    BIO_set_init(bio, 1);
    return bio;
}

class OpenSslEnd : public TlsEnd {
public:
    OpenSslEnd(const ContextPointer& context, Endpoint chosenRole)
        : role(chosenRole), connection(SSL_new(context.get()), SSL_free) {
        BIO* const bio = NewWireBio(wire);
        SSL_set_bio(connection.get(), bio, bio);
        SetRole();
    }

    void Handshake() override {
        const int result = SSL_do_handshake(connection.get());
        Require(result == 1 || SSL_get_error(connection.get(), result) == SSL_ERROR_WANT_READ, "OpenSSL's handshake");
    }

    bool IsComplete() override { return SSL_is_init_finished(connection.get()) == 1; }

    // What has not been shut down loses its session.
    void StartOver() override {
        SSL_set_shutdown(connection.get(), SSL_SENT_SHUTDOWN | SSL_RECEIVED_SHUTDOWN);
        Require(SSL_clear(connection.get()) == 1, "SSL_clear");
        SetRole();
    }

    void Send(std::string_view data) override {
        const int count = SSL_write(connection.get(), data.data(), static_cast<int>(data.size()));
        Require(count == static_cast<int>(data.size()), "SSL_write");
    }

    std::string_view Receive() override {
        const int count = SSL_read(connection.get(), buffer.data(), static_cast<int>(buffer.size()));
        Require(count > 0, "SSL_read");
        return {buffer.data(), static_cast<size_t>(count)};
    }

private:
    void SetRole() {
        if (role == Endpoint::kClient) SSL_set_connect_state(connection.get());
        if (role == Endpoint::kServer) SSL_set_accept_state(connection.get());
    }

    Endpoint role;
    std::unique_ptr<SSL, decltype(&SSL_free)> connection;
    std::array<char, kFragmentMaxBytes> buffer;
};

void UseIdentity(SSL_CTX* context, const TlsIdentity& identity) {
    const auto* const certificate = reinterpret_cast<const unsigned char*>(identity.certificate.data());
    const auto* const key = reinterpret_cast<const unsigned char*>(identity.privateKey.data());
    Require(
        SSL_CTX_use_certificate_ASN1(context, static_cast<int>(identity.certificate.size()), certificate) == 1 &&
            SSL_CTX_use_PrivateKey_ASN1(EVP_PKEY_RSA, context, key, static_cast<long>(identity.privateKey.size())) == 1,
        "OpenSSL's identity");
}

// Without this, the chain would be built and checked even though the result does not count.
int AcceptCertificate(X509_STORE_CTX* /*context*/, void* /*argument*/) {
    return 1;
}

class Maker : public TlsMaker {
public:
    Maker(const TlsSetup& setup, const char* cipherList)
        : role(setup.role), context(SSL_CTX_new(TLS_method()), SSL_CTX_free) {
        SSL_CTX_set_security_level(context.get(), 0);
        SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
        SSL_CTX_set_max_proto_version(context.get(), TLS1_VERSION);
        Require(SSL_CTX_set_cipher_list(context.get(), cipherList) == 1, "OpenSSL's cipher list");
        SSL_CTX_set_options(context.get(), SSL_OP_NO_TICKET | SSL_OP_NO_ENCRYPT_THEN_MAC |
                                               SSL_OP_NO_EXTENDED_MASTER_SECRET | SSL_OP_DONT_INSERT_EMPTY_FRAGMENTS);
        SSL_CTX_set_cert_verify_callback(context.get(), AcceptCertificate, nullptr);
        SSL_CTX_set_read_ahead(context.get(), 1);
        if (role == Endpoint::kServer) {
            SSL_CTX_set_session_cache_mode(context.get(), setup.resumes ? SSL_SESS_CACHE_SERVER : SSL_SESS_CACHE_OFF);
            UseIdentity(context.get(), LoadTlsIdentity(setup.identity));
        }
    }

    std::unique_ptr<TlsEnd> NewEnd() override { return std::make_unique<OpenSslEnd>(context, role); }

private:
    Endpoint role;
    ContextPointer context;
};

}  // namespace

// The suites with RC4 are not in the builds of today.
std::unique_ptr<TlsMaker> OpenSslMaker(const TlsSetup& setup) {
    if (setup.suite == kRsaWithAes128Sha) return std::make_unique<Maker>(setup, "AES128-SHA");
    if (setup.suite == kRsaWithAes256Sha) return std::make_unique<Maker>(setup, "AES256-SHA");
    return {};
}

}  // namespace velmora
