#include "tests/interop/gnutls_peer.h"

#include <gnutls/x509.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace velmora::interop {
namespace {

struct GnuTlsSuite {
    const char* name;
    const char* priorities;
    gnutls_cipher_algorithm_t cipher;
    gnutls_mac_algorithm_t mac;
};

constexpr GnuTlsSuite kSuites[] = {
    {"AES128-SHA", "+AES-128-CBC:+SHA1", GNUTLS_CIPHER_AES_128_CBC, GNUTLS_MAC_SHA1},
    {"AES256-SHA", "+AES-256-CBC:+SHA1", GNUTLS_CIPHER_AES_256_CBC, GNUTLS_MAC_SHA1},
    {"RC4-SHA", "+ARCFOUR-128:+SHA1", GNUTLS_CIPHER_ARCFOUR_128, GNUTLS_MAC_SHA1},
    {"RC4-MD5", "+ARCFOUR-128:+MD5", GNUTLS_CIPHER_ARCFOUR_128, GNUTLS_MAC_MD5},
    {"DES-CBC3-SHA", "+3DES-CBC:+SHA1", GNUTLS_CIPHER_3DES_CBC, GNUTLS_MAC_SHA1},
};

// What must not fail in setting a peer up.
int Must(int result) {
    if (result >= 0) return result;
    std::fprintf(stderr, "GnuTLS: %s\n", gnutls_strerror(result));
    std::abort();
}

ByteString Priorities(const TlsPeerOptions& options) {
    const auto* suite =
        std::ranges::find_if(kSuites, [&](const GnuTlsSuite& candidate) { return options.suite == candidate.name; });
    if (suite == std::end(kSuites)) Must(GNUTLS_E_UNKNOWN_CIPHER_SUITE);
    const ByteString versions = options.laterVersions ? "+VERS-TLS-ALL" : "+VERS-TLS1.0";
    // Our end knows no RFC 5746, and the test identities are as old as its suites.
    return "NONE:" + versions + ":" + suite->priorities +
           ":+RSA:+COMP-NULL:+SIGN-ALL:+GROUP-ALL:%PROFILE_VERY_WEAK:%UNSAFE_RENEGOTIATION:%VERIFY_ALLOW_BROKEN";
}

gnutls_datum_t Datum(const ByteString& bytes) {
    // Only read from, though the type does not say so.
    return {reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data())), static_cast<unsigned>(bytes.size())};
}

ByteString Bytes(gnutls_datum_t datum) {
    return {reinterpret_cast<const char*>(datum.data), datum.size};
}

}  // namespace

GnuTlsPeer::GnuTlsPeer(const TlsPeerOptions& peerOptions) : options(peerOptions) {
    gnutls_certificate_credentials_t fresh = nullptr;
    Must(gnutls_certificate_allocate_credentials(&fresh));
    credentials.reset(fresh);
    gnutls_certificate_set_verify_flags(fresh, GNUTLS_VERIFY_ALLOW_BROKEN);
    UseIdentity();
    UseTrusted();
    Restart();
}

void GnuTlsPeer::UseIdentity() {
    if (options.identity.certificate.empty()) return;
    const gnutls_datum_t certificate = Datum(options.identity.certificate);
    const gnutls_datum_t key = Datum(options.identity.privateKey);
    Must(gnutls_certificate_set_x509_key_mem(credentials.get(), &certificate, &key, GNUTLS_X509_FMT_DER));
}

void GnuTlsPeer::UseTrusted() {
    if (options.trusted.empty()) return;
    const gnutls_datum_t trusted = Datum(options.trusted);
    Must(gnutls_certificate_set_x509_trust_mem(credentials.get(), &trusted, GNUTLS_X509_FMT_DER));
    gnutls_certificate_set_verify_function(credentials.get(), Verify);
}

void GnuTlsPeer::Restart() {
    const bool isClient = options.role == PeerRole::kClient;
    if (state.handshakeComplete && isClient && options.resumption) {
        gnutls_datum_t data = {};
        Must(gnutls_session_get_data2(session.get(), &data));
        resumable = Bytes(data);
        gnutls_free(data.data);
    }
    state = {};
    incoming.clear();
    outgoing.clear();
    gnutls_session_t fresh = nullptr;
    const unsigned role = isClient ? GNUTLS_CLIENT : GNUTLS_SERVER;
    Must(gnutls_init(&fresh, role | GNUTLS_NONBLOCK | GNUTLS_NO_TICKETS));
    session.reset(fresh);
    gnutls_session_set_ptr(fresh, this);
    const char* unreadable = nullptr;
    Must(gnutls_priority_set_direct(fresh, Priorities(options).c_str(), &unreadable));
    Must(gnutls_credentials_set(fresh, GNUTLS_CRD_CERTIFICATE, credentials.get()));
    gnutls_transport_set_ptr(fresh, this);
    gnutls_transport_set_pull_function(fresh, Pull);
    gnutls_transport_set_push_function(fresh, Push);
    gnutls_handshake_set_timeout(fresh, GNUTLS_INDEFINITE_TIMEOUT);
    if (options.fragmentBytes < 16384) Must(static_cast<int>(gnutls_record_set_max_size(fresh, options.fragmentBytes)));
    if (isClient) {
        SetUpClient();
    } else {
        SetUpServer();
    }
}

void GnuTlsPeer::SetUpClient() {
    const ByteString& name = options.serverName;
    if (!name.empty()) Must(gnutls_server_name_set(session.get(), GNUTLS_NAME_DNS, name.data(), name.size()));
    if (!resumable.empty()) Must(gnutls_session_set_data(session.get(), resumable.data(), resumable.size()));
}

void GnuTlsPeer::SetUpServer() {
    if (!options.trusted.empty()) {
        gnutls_certificate_server_set_request(session.get(),
                                              options.demandsCertificate ? GNUTLS_CERT_REQUIRE : GNUTLS_CERT_REQUEST);
    }
    if (!options.resumption) return;
    gnutls_db_set_ptr(session.get(), this);
    gnutls_db_set_store_function(session.get(), StoreSession);
    gnutls_db_set_retrieve_function(session.get(), FetchSession);
    gnutls_db_set_remove_function(session.get(), RemoveSession);
}

ByteString GnuTlsPeer::Take(std::string_view fromNetwork) {
    incoming += fromNetwork;
    if (!state.handshakeComplete && !state.failed) state.handshakeComplete = Succeeded(gnutls_handshake(session.get()));
    if (state.handshakeComplete) ReadAll();
    return std::exchange(outgoing, {});
}

void GnuTlsPeer::Write(std::string_view plaintext) {
    while (!plaintext.empty()) {
        const ssize_t sent = gnutls_record_send(session.get(), plaintext.data(), plaintext.size());
        if (!Succeeded(sent)) return;
        plaintext.remove_prefix(static_cast<size_t>(sent));
    }
}

void GnuTlsPeer::AskForRenegotiation() {
    Succeeded(gnutls_rehandshake(session.get()));
}

void GnuTlsPeer::Close() {
    Succeeded(gnutls_bye(session.get(), GNUTLS_SHUT_WR));
}

TlsPeerState GnuTlsPeer::State() const {
    TlsPeerState current = state;
    gnutls_session_t now = session.get();
    current.resumed = gnutls_session_is_resumed(now) != 0;
    // GnuTLS counts SSL 3.0 as 1.
    current.version = static_cast<uint16_t>(0x0300 + gnutls_protocol_get_version(now) - GNUTLS_SSL3);
    for (const GnuTlsSuite& suite : kSuites) {
        if (gnutls_cipher_get(now) == suite.cipher && gnutls_mac_get(now) == suite.mac) current.suite = suite.name;
    }
    char name[256];
    size_t nameBytes = sizeof(name);
    unsigned type = 0;
    if (gnutls_server_name_get(now, name, &nameBytes, &type, 0) == GNUTLS_E_SUCCESS) current.serverName = name;
    unsigned count = 0;
    const gnutls_datum_t* certificates = gnutls_certificate_get_peers(now, &count);
    if (count > 0) current.peerCertificate = Bytes(certificates[0]);
    return current;
}

ByteString GnuTlsPeer::Read() {
    return std::exchange(state.received, {});
}

void GnuTlsPeer::ReadAll() {
    char chunk[16384];
    while (!state.failed && !state.closeReceived) {
        const ssize_t count = gnutls_record_recv(session.get(), chunk, sizeof(chunk));
        if (!Succeeded(count)) return;
        if (count == 0) state.closeReceived = true;
        state.received.append(chunk, static_cast<size_t>(count));
    }
}

// Also notes the end of the connection, of which GnuTLS leaves it to its user to tell the other end. That there is
// nothing more to read is none.
bool GnuTlsPeer::Succeeded(ssize_t result) {
    if (result >= 0) return true;
    const int error = static_cast<int>(result);
    if (error == GNUTLS_E_WARNING_ALERT_RECEIVED || error == GNUTLS_E_FATAL_ALERT_RECEIVED) {
        state.alertReceived = gnutls_alert_get(session.get());
    }
    if (gnutls_error_is_fatal(error) != 0) {
        state.failed = true;
        state.failure = gnutls_strerror(error);
        if (error != GNUTLS_E_FATAL_ALERT_RECEIVED) gnutls_alert_send_appropriate(session.get(), error);
    }
    return false;
}

ssize_t GnuTlsPeer::Pull(gnutls_transport_ptr_t self, void* target, size_t most) {
    auto* peer = static_cast<GnuTlsPeer*>(self);
    const size_t count = std::min(most, peer->incoming.size());
    if (count == 0) {
        gnutls_transport_set_errno(peer->session.get(), EAGAIN);
        return -1;
    }
    std::memcpy(target, peer->incoming.data(), count);
    peer->incoming.erase(0, count);
    return static_cast<ssize_t>(count);
}

ssize_t GnuTlsPeer::Push(gnutls_transport_ptr_t self, const void* bytes, size_t count) {
    static_cast<GnuTlsPeer*>(self)->outgoing.append(static_cast<const char*>(bytes), count);
    return static_cast<ssize_t>(count);
}

int GnuTlsPeer::StoreSession(void* self, gnutls_datum_t id, gnutls_datum_t data) {
    static_cast<GnuTlsPeer*>(self)->stored[Bytes(id)] = Bytes(data);
    return 0;
}

gnutls_datum_t GnuTlsPeer::FetchSession(void* self, gnutls_datum_t id) {
    const auto& stored = static_cast<GnuTlsPeer*>(self)->stored;
    const auto found = stored.find(Bytes(id));
    if (found == stored.end()) return {};
    const ByteString& data = found->second;
    gnutls_datum_t copy = {static_cast<unsigned char*>(gnutls_malloc(data.size())), static_cast<unsigned>(data.size())};
    std::memcpy(copy.data, data.data(), data.size());
    return copy;
}

int GnuTlsPeer::RemoveSession(void* self, gnutls_datum_t id) {
    static_cast<GnuTlsPeer*>(self)->stored.erase(Bytes(id));
    return 0;
}

// What the handshake asks when the other end has shown a certificate, or a client none.
int GnuTlsPeer::Verify(gnutls_session_t session) {
    unsigned status = 0;
    const int result = gnutls_certificate_verify_peers2(session, &status);
    if (result == GNUTLS_E_NO_CERTIFICATE_FOUND) return 0;
    return result < 0 || status != 0 ? GNUTLS_E_CERTIFICATE_ERROR : 0;
}

}  // namespace velmora::interop
