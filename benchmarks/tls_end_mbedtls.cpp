#include <mbedtls/ctr_drbg.h>
#include <mbedtls/entropy.h>
#include <mbedtls/pk.h>
#include <mbedtls/ssl.h>
#include <mbedtls/ssl_cache.h>
#include <mbedtls/x509_crt.h>

#include <array>

#include "benchmarks/tls_end.h"
#include "tests/support/tls_identity.h"
#include "tls/protocol.h"

namespace velmora {
namespace {

int WriteToWire(void* wire, const unsigned char* bytes, size_t count) {
    static_cast<Wire*>(wire)->Write(bytes, count);
    return static_cast<int>(count);
}

int ReadFromWire(void* wire, unsigned char* target, size_t capacity) {
    const size_t count = static_cast<Wire*>(wire)->Read(target, capacity);
    return count > 0 ? static_cast<int>(count) : MBEDTLS_ERR_SSL_WANT_READ;
}

class MbedTlsEnd : public TlsEnd {
public:
    MbedTlsEnd(const mbedtls_ssl_config& config, Endpoint chosenRole) : role(chosenRole) {
        mbedtls_ssl_init(&connection);
        mbedtls_ssl_session_init(&session);
        Require(mbedtls_ssl_setup(&connection, &config) == 0, "mbedtls_ssl_setup");
        mbedtls_ssl_set_bio(&connection, &wire, WriteToWire, ReadFromWire, nullptr);
    }

    ~MbedTlsEnd() override {
        mbedtls_ssl_session_free(&session);
        mbedtls_ssl_free(&connection);
    }

    void Handshake() override {
        const int result = mbedtls_ssl_handshake(&connection);
        Require(result == 0 || result == MBEDTLS_ERR_SSL_WANT_READ, "Mbed TLS's handshake");
    }

    bool IsComplete() override { return connection.state == MBEDTLS_SSL_HANDSHAKE_OVER; }

    void StartOver() override {
        if (role == Endpoint::kClient) mbedtls_ssl_get_session(&connection, &session);
        mbedtls_ssl_session_reset(&connection);
        if (role == Endpoint::kClient) mbedtls_ssl_set_session(&connection, &session);
    }

    void Send(std::string_view data) override {
        const int count =
            mbedtls_ssl_write(&connection, reinterpret_cast<const unsigned char*>(data.data()), data.size());
        Require(count == static_cast<int>(data.size()), "mbedtls_ssl_write");
    }

    std::string_view Receive() override {
        const int count = mbedtls_ssl_read(&connection, buffer.data(), buffer.size());
        Require(count > 0, "mbedtls_ssl_read");
        return {reinterpret_cast<const char*>(buffer.data()), static_cast<size_t>(count)};
    }

private:
    Endpoint role;
    mbedtls_ssl_context connection;
    mbedtls_ssl_session session;
    std::array<unsigned char, kFragmentMaxBytes> buffer;
};

class Maker : public TlsMaker {
public:
    Maker(const TlsSetup& setup, int suiteNumber) : role(setup.role), suites{suiteNumber, 0} {
        mbedtls_entropy_init(&entropy);
        mbedtls_ctr_drbg_init(&random);
        mbedtls_x509_crt_init(&certificate);
        mbedtls_pk_init(&key);
        mbedtls_ssl_cache_init(&cache);
        mbedtls_ssl_config_init(&config);
        Require(mbedtls_ctr_drbg_seed(&random, mbedtls_entropy_func, &entropy, nullptr, 0) == 0, "Mbed TLS's random");
        const bool isClient = role == Endpoint::kClient;
        mbedtls_ssl_config_defaults(&config, isClient ? MBEDTLS_SSL_IS_CLIENT : MBEDTLS_SSL_IS_SERVER,
                                    MBEDTLS_SSL_TRANSPORT_STREAM, MBEDTLS_SSL_PRESET_DEFAULT);
        mbedtls_ssl_conf_min_version(&config, MBEDTLS_SSL_MAJOR_VERSION_3, MBEDTLS_SSL_MINOR_VERSION_1);
        mbedtls_ssl_conf_max_version(&config, MBEDTLS_SSL_MAJOR_VERSION_3, MBEDTLS_SSL_MINOR_VERSION_1);
        mbedtls_ssl_conf_ciphersuites(&config, suites.data());
        mbedtls_ssl_conf_authmode(&config, MBEDTLS_SSL_VERIFY_NONE);
        mbedtls_ssl_conf_rng(&config, mbedtls_ctr_drbg_random, &random);
        mbedtls_ssl_conf_encrypt_then_mac(&config, MBEDTLS_SSL_ETM_DISABLED);
        mbedtls_ssl_conf_extended_master_secret(&config, MBEDTLS_SSL_EXTENDED_MS_DISABLED);
        mbedtls_ssl_conf_session_tickets(&config, MBEDTLS_SSL_SESSION_TICKETS_DISABLED);
        mbedtls_ssl_conf_cbc_record_splitting(&config, MBEDTLS_SSL_CBC_RECORD_SPLITTING_DISABLED);
        if (isClient) return;
        if (setup.resumes)
            mbedtls_ssl_conf_session_cache(&config, &cache, mbedtls_ssl_cache_get, mbedtls_ssl_cache_set);
        UseIdentity(LoadTlsIdentity(setup.identity));
    }

    ~Maker() override {
        mbedtls_ssl_config_free(&config);
        mbedtls_ssl_cache_free(&cache);
        mbedtls_pk_free(&key);
        mbedtls_x509_crt_free(&certificate);
        mbedtls_ctr_drbg_free(&random);
        mbedtls_entropy_free(&entropy);
    }

    std::unique_ptr<TlsEnd> NewEnd() override { return std::make_unique<MbedTlsEnd>(config, role); }

private:
    void UseIdentity(const TlsIdentity& identity) {
        const auto* const certificateDer = reinterpret_cast<const unsigned char*>(identity.certificate.data());
        const auto* const keyDer = reinterpret_cast<const unsigned char*>(identity.privateKey.data());
        Require(mbedtls_x509_crt_parse_der(&certificate, certificateDer, identity.certificate.size()) == 0 &&
                    mbedtls_pk_parse_key(&key, keyDer, identity.privateKey.size(), nullptr, 0) == 0 &&
                    mbedtls_ssl_conf_own_cert(&config, &certificate, &key) == 0,
                "Mbed TLS's identity");
    }

    Endpoint role;
    std::array<int, 2> suites;  // ends with 0
    mbedtls_entropy_context entropy;
    mbedtls_ctr_drbg_context random;
    mbedtls_x509_crt certificate;
    mbedtls_pk_context key;
    mbedtls_ssl_cache_context cache;
    mbedtls_ssl_config config;
};

}  // namespace

// The suites with RC4 are not in the builds of today.
std::unique_ptr<TlsMaker> MbedTlsMaker(const TlsSetup& setup) {
    if (!setup.suite.BlockMode()) return {};
    return std::make_unique<Maker>(setup, setup.suite.number);
}

}  // namespace velmora
