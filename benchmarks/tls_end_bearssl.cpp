#include <bearssl.h>

#include <array>

#include "benchmarks/tls_end.h"
#include "benchmarks/unsigned_bytes.h"
#include "tests/support/tls_identity.h"
#include "tls/protocol.h"

namespace velmora {
namespace {

constexpr size_t kSessionsMaxBytes = 4096;

// Takes the key out of the server's certificate, and believes it.
struct KeyReader {
    const br_x509_class* calls;  // comes first: it stands for the whole
    mutable br_x509_decoder_context decoder;
    bool isFirst;  // of the chain
};

KeyReader& Reader(const br_x509_class** calls) {
    return *reinterpret_cast<KeyReader*>(calls);
}

const br_x509_class kKeyReaderCalls = {
    .context_size = sizeof(KeyReader),
    .start_chain = [](const br_x509_class** calls, const char* /*serverName*/) { Reader(calls).isFirst = true; },
    .start_cert =
        [](const br_x509_class** calls, uint32_t /*length*/) {
            if (Reader(calls).isFirst) br_x509_decoder_init(&Reader(calls).decoder, nullptr, nullptr);
        },
    .append =
        [](const br_x509_class** calls, const unsigned char* bytes, size_t count) {
            if (Reader(calls).isFirst) br_x509_decoder_push(&Reader(calls).decoder, bytes, count);
        },
    .end_cert = [](const br_x509_class** calls) { Reader(calls).isFirst = false; },
    .end_chain = [](const br_x509_class** calls) -> unsigned int {
        return static_cast<unsigned int>(br_x509_decoder_last_error(&Reader(calls).decoder));
    },
    .get_pkey = [](const br_x509_class* const* calls, unsigned int* usages) -> const br_x509_pkey* {
        if (usages != nullptr) *usages = BR_KEYTYPE_KEYX | BR_KEYTYPE_SIGN;
        return br_x509_decoder_get_pkey(&reinterpret_cast<const KeyReader*>(calls)->decoder);
    },
};

class BearSslEnd : public TlsEnd {
public:
    explicit BearSslEnd(br_ssl_engine_context& chosenEngine) : engine(chosenEngine) {}

    void Handshake() override { Pump(); }

    bool IsComplete() override { return (br_ssl_engine_current_state(&engine) & BR_SSL_SENDAPP) != 0; }

    void Send(std::string_view data) override {
        size_t capacity = 0;
        unsigned char* const target = br_ssl_engine_sendapp_buf(&engine, &capacity);
        Require(capacity >= data.size(), "BearSSL's buffer");
        data.copy(reinterpret_cast<char*>(target), data.size());
        br_ssl_engine_sendapp_ack(&engine, data.size());
        br_ssl_engine_flush(&engine, 0);
        Pump();
    }

    std::string_view Receive() override {
        if (lastBytes > 0) br_ssl_engine_recvapp_ack(&engine, lastBytes);
        Pump();
        const unsigned char* const bytes = br_ssl_engine_recvapp_buf(&engine, &lastBytes);
        Require(bytes != nullptr, "BearSSL's record");
        return {reinterpret_cast<const char*>(bytes), lastBytes};
    }

protected:
    void Configure(const TlsSetup& setup) {
        const uint16_t suite = setup.suite.number;
        br_ssl_engine_set_versions(&engine, BR_TLS10, BR_TLS10);
        br_ssl_engine_set_suites(&engine, &suite, 1);
        br_ssl_engine_set_buffer(&engine, buffer.data(), buffer.size(), 1);
    }

private:
    // Writes what is to be written and takes what has come, as long as there is something to do.
    void Pump() {
        for (;;) {
            size_t count = 0;
            Require((br_ssl_engine_current_state(&engine) & BR_SSL_CLOSED) == 0, "BearSSL's connection");
            if (const unsigned char* bytes = br_ssl_engine_sendrec_buf(&engine, &count); bytes != nullptr) {
                wire.Write(bytes, count);
                br_ssl_engine_sendrec_ack(&engine, count);
            } else if (unsigned char* target = br_ssl_engine_recvrec_buf(&engine, &count);
                       target != nullptr && !wire.incoming.empty()) {
                br_ssl_engine_recvrec_ack(&engine, wire.Read(target, count));
            } else {
                return;
            }
        }
    }

    br_ssl_engine_context& engine;
    size_t lastBytes = 0;  // of the data that Receive gave last
    std::array<unsigned char, BR_SSL_BUFSIZE_BIDI> buffer;
};

class ClientEnd : public BearSslEnd {
public:
    explicit ClientEnd(const TlsSetup& setup) : BearSslEnd(client.eng), reader{&kKeyReaderCalls, {}, true} {
        br_x509_minimal_context unused;
        br_ssl_client_init_full(&client, &unused, nullptr, 0);
        br_ssl_engine_set_x509(&client.eng, &reader.calls);
        Configure(setup);
        br_ssl_client_reset(&client, nullptr, 0);
    }

    void StartOver() override { br_ssl_client_reset(&client, nullptr, 1); }

private:
    br_ssl_client_context client;
    KeyReader reader;
};

// What a server's connections share.
struct ServerIdentity {
    explicit ServerIdentity(const TlsSetup& setup) : identity(LoadTlsIdentity(setup.identity)) {
        br_skey_decoder_init(&key);
        br_skey_decoder_push(&key, identity.privateKey.data(), identity.privateKey.size());
        Require(br_skey_decoder_key_type(&key) == BR_KEYTYPE_RSA, "BearSSL's identity");
        certificate = {UnsignedBytes(identity.certificate), identity.certificate.size()};
        br_ssl_session_cache_lru_init(&cache, store.data(), store.size());
    }

    TlsIdentity identity;
    br_skey_decoder_context key;
    br_x509_certificate certificate;
    br_ssl_session_cache_lru cache;
    std::array<unsigned char, kSessionsMaxBytes> store;
};

class ServerEnd : public BearSslEnd {
public:
    ServerEnd(const TlsSetup& setup, ServerIdentity& shared) : BearSslEnd(server.eng) {
        br_ssl_server_init_full_rsa(&server, &shared.certificate, 1, br_skey_decoder_get_rsa(&shared.key));
        if (setup.resumes) br_ssl_server_set_cache(&server, &shared.cache.vtable);
        Configure(setup);
        br_ssl_server_reset(&server);
    }

    void StartOver() override { br_ssl_server_reset(&server); }

private:
    br_ssl_server_context server;
};

class Maker : public TlsMaker {
public:
    explicit Maker(const TlsSetup& chosenSetup) : setup(chosenSetup), identity(setup) {}

    std::unique_ptr<TlsEnd> NewEnd() override {
        if (setup.role == Endpoint::kClient) return std::make_unique<ClientEnd>(setup);
        return std::make_unique<ServerEnd>(setup, identity);
    }

    bool SendsOneRecord() const override { return false; }

private:
    TlsSetup setup;
    ServerIdentity identity;
};

}  // namespace

// It has no RC4.
std::unique_ptr<TlsMaker> BearSslMaker(const TlsSetup& setup) {
    if (!setup.suite.BlockMode()) return {};
    return std::make_unique<Maker>(setup);
}

}  // namespace velmora
