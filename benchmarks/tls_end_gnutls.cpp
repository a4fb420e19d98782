#include <gnutls/gnutls.h>

#include <array>
#include <map>

#include "benchmarks/tls_end.h"
#include "tests/support/tls_identity.h"
#include "tls/protocol.h"

namespace velmora {
namespace {

constexpr size_t kSessionMaxBytes = 4096;

using CredentialsPointer = std::shared_ptr<gnutls_certificate_credentials_st>;

gnutls_datum_t DatumOf(ByteString& bytes) {
    return {reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size())};
}

ByteString BytesOf(const gnutls_datum_t& datum) {
    return {reinterpret_cast<const char*>(datum.data), datum.size};
}

// A server keeps its sessions through functions of its owner.
using Sessions = std::map<ByteString, ByteString>;

int StoreSession(void* sessions, gnutls_datum_t id, gnutls_datum_t session) {
    (*static_cast<Sessions*>(sessions))[BytesOf(id)] = BytesOf(session);
    return 0;
}

gnutls_datum_t RetrieveSession(void* sessions, gnutls_datum_t id) {
    const auto found = static_cast<Sessions*>(sessions)->find(BytesOf(id));
    if (found == static_cast<Sessions*>(sessions)->end()) return {};
    const ByteString& session = found->second;
    auto* const copy = static_cast<unsigned char*>(gnutls_malloc(session.size()));
    session.copy(reinterpret_cast<char*>(copy), session.size());
    return {copy, static_cast<unsigned int>(session.size())};
}

int RemoveSession(void* sessions, gnutls_datum_t id) {
    static_cast<Sessions*>(sessions)->erase(BytesOf(id));
    return 0;
}

ssize_t WriteToWire(gnutls_transport_ptr_t wire, const void* bytes, size_t count) {
    static_cast<Wire*>(wire)->Write(bytes, count);
    return static_cast<ssize_t>(count);
}

// What the connections of a case share.
struct Shared {
    TlsSetup setup;
    gnutls_priority_t priorities = nullptr;
    gnutls_certificate_credentials_t credentials = nullptr;
    Sessions sessions;
};

class GnuTlsEnd : public TlsEnd {
public:
    explicit GnuTlsEnd(Shared& chosenShared) : shared(chosenShared) { SetUp(); }

    ~GnuTlsEnd() override { gnutls_deinit(session); }

    void Handshake() override {
        const int result = gnutls_handshake(session);
        complete = result == GNUTLS_E_SUCCESS;
        Require(complete || result == GNUTLS_E_AGAIN, "GnuTLS's handshake");
    }

    bool IsComplete() override { return complete; }

    void StartOver() override {
        gnutls_datum_t data = {};
        if (shared.setup.role == Endpoint::kClient) gnutls_session_get_data2(session, &data);
        gnutls_deinit(session);
        SetUp();
        if (shared.setup.role == Endpoint::kClient) gnutls_session_set_data(session, data.data, data.size);
        gnutls_free(data.data);
    }

    void Send(std::string_view data) override {
        Require(gnutls_record_send(session, data.data(), data.size()) == static_cast<ssize_t>(data.size()),
                "gnutls_record_send");
    }

    std::string_view Receive() override {
        const ssize_t count = gnutls_record_recv(session, buffer.data(), buffer.size());
        Require(count > 0, "gnutls_record_recv");
        return {buffer.data(), static_cast<size_t>(count)};
    }

private:
    void SetUp() {
        complete = false;
        const unsigned int mode = shared.setup.role == Endpoint::kClient ? GNUTLS_CLIENT : GNUTLS_SERVER;
        gnutls_init(&session, mode | GNUTLS_NONBLOCK | GNUTLS_NO_EXTENSIONS | GNUTLS_NO_TICKETS | GNUTLS_NO_SIGNAL);
        gnutls_priority_set(session, shared.priorities);
        gnutls_credentials_set(session, GNUTLS_CRD_CERTIFICATE, shared.credentials);
        gnutls_transport_set_ptr(session, this);
        gnutls_transport_set_push_function(session, [](gnutls_transport_ptr_t end, const void* bytes, size_t count) {
            return WriteToWire(&static_cast<GnuTlsEnd*>(end)->wire, bytes, count);
        });
        gnutls_transport_set_pull_function(session, [](gnutls_transport_ptr_t end, void* target, size_t capacity) {
            return static_cast<GnuTlsEnd*>(end)->ReadFromWire(target, capacity);
        });
        if (shared.setup.role == Endpoint::kServer && shared.setup.resumes) {
            gnutls_db_set_ptr(session, &shared.sessions);
            gnutls_db_set_store_function(session, StoreSession);
            gnutls_db_set_retrieve_function(session, RetrieveSession);
            gnutls_db_set_remove_function(session, RemoveSession);
        }
    }

    ssize_t ReadFromWire(void* target, size_t capacity) {
        const size_t count = wire.Read(target, capacity);
        if (count > 0) return static_cast<ssize_t>(count);
        gnutls_transport_set_errno(session, EAGAIN);
        return -1;
    }

    Shared& shared;
    gnutls_session_t session = nullptr;
    bool complete = false;
    std::array<char, kFragmentMaxBytes> buffer;
};

std::string PriorityText(const CipherSuite& suite) {
    std::string cipher = "ARCFOUR-128";
    if (suite.cipherKind == CipherKind::kAes128Cbc) cipher = "AES-128-CBC";
    if (suite.cipherKind == CipherKind::kAes256Cbc) cipher = "AES-256-CBC";
    const std::string mac = suite.macKind == MacKind::kMd5 ? "MD5" : "SHA1";
    return "NONE:+VERS-TLS1.0:+" + cipher + ":+" + mac +
           ":+RSA:+COMP-NULL:+CTYPE-X509:+SIGN-ALL:%NO_ETM:%NO_SESSION_HASH:%COMPAT:%VERIFY_ALLOW_BROKEN";
}

class Maker : public TlsMaker {
public:
    explicit Maker(const TlsSetup& setup) {
        shared.setup = setup;
        Require(gnutls_priority_init(&shared.priorities, PriorityText(setup.suite).c_str(), nullptr) == 0,
                "GnuTLS's priorities");
        gnutls_certificate_allocate_credentials(&shared.credentials);
        if (setup.role == Endpoint::kServer) UseIdentity(LoadTlsIdentity(setup.identity));
    }

    ~Maker() override {
        gnutls_certificate_free_credentials(shared.credentials);
        gnutls_priority_deinit(shared.priorities);
    }

    std::unique_ptr<TlsEnd> NewEnd() override { return std::make_unique<GnuTlsEnd>(shared); }

private:
    void UseIdentity(TlsIdentity identity) const {
        const gnutls_datum_t certificate = DatumOf(identity.certificate);
        const gnutls_datum_t key = DatumOf(identity.privateKey);
        Require(gnutls_certificate_set_x509_key_mem(shared.credentials, &certificate, &key, GNUTLS_X509_FMT_DER) >= 0,
                "GnuTLS's identity");
    }

    Shared shared;
};

}  // namespace

std::unique_ptr<TlsMaker> GnuTlsMaker(const TlsSetup& setup) {
    return std::make_unique<Maker>(setup);
}

}  // namespace velmora
