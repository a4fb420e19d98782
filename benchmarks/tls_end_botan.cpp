#include <botan/auto_rng.h>
#include <botan/credentials_manager.h>
#include <botan/data_src.h>
#include <botan/rsa.h>
#include <botan/tls_client.h>
#include <botan/tls_policy.h>
#include <botan/tls_server.h>
#include <botan/tls_session_manager.h>
#include <botan/x509cert.h>

#include <array>

#include "benchmarks/tls_end.h"
#include "tests/support/tls_identity.h"
#include "tls/protocol.h"

namespace velmora {
namespace {

namespace tls = Botan::TLS;

// TLS 1.0 with one suite, and nothing that ours does not do.
class Policy : public tls::Policy {
public:
    explicit Policy(const CipherSuite& suite)
        : cipher(suite.cipherKind == CipherKind::kAes128Cbc ? "AES-128" : "AES-256") {}

    std::vector<std::string> allowed_ciphers() const override { return {cipher}; }
    std::vector<std::string> allowed_macs() const override { return {"SHA-1"}; }
    std::vector<std::string> allowed_key_exchange_methods() const override { return {"RSA"}; }
    std::vector<std::string> allowed_signature_methods() const override { return {"IMPLICIT"}; }
    bool allow_tls10() const override { return true; }
    bool allow_tls11() const override { return false; }
    bool allow_tls12() const override { return false; }
    bool allow_insecure_renegotiation() const override { return true; }
    bool negotiate_encrypt_then_mac() const override { return false; }
    bool support_cert_status_message() const override { return false; }
    bool require_cert_revocation_info() const override { return false; }
    bool acceptable_protocol_version(tls::Protocol_Version version) const override {
        return version == tls::Protocol_Version::TLS_V10;
    }
    void check_peer_key_acceptable(const Botan::Public_Key& /*key*/) const override {}

private:
    std::string cipher;
};

class Credentials : public Botan::Credentials_Manager {
public:
    explicit Credentials(const TlsIdentity& identity)
        : certificate(std::vector<uint8_t>(identity.certificate.begin(), identity.certificate.end())),
          key({}, {identity.privateKey.begin(), identity.privateKey.end()}) {}

    std::vector<Botan::X509_Certificate> cert_chain(const std::vector<std::string>& /*keyTypes*/,
                                                    const std::string& /*type*/,
                                                    const std::string& /*context*/) override {
        return {certificate};
    }

    Botan::Private_Key* private_key_for(const Botan::X509_Certificate& /*certificate*/, const std::string& /*type*/,
                                        const std::string& /*context*/) override {
        return &key;
    }

    // Without a key for them, there are no tickets.
    Botan::SymmetricKey psk(const std::string& /*type*/, const std::string& /*context*/,
                            const std::string& /*identity*/) override {
        return Botan::SymmetricKey("");
    }

private:
    Botan::X509_Certificate certificate;
    Botan::RSA_PrivateKey key;
};

// What the connections of a case share.
struct Shared {
    explicit Shared(const TlsSetup& setup)
        : role(setup.role), policy(setup.suite), credentials(LoadTlsIdentity(setup.identity)) {
        if (setup.resumes) sessions = std::make_unique<tls::Session_Manager_In_Memory>(random);
        if (!setup.resumes) sessions = std::make_unique<tls::Session_Manager_Noop>();
    }

    Endpoint role;
    Policy policy;
    Credentials credentials;
    Botan::AutoSeeded_RNG random;
    std::unique_ptr<tls::Session_Manager> sessions;
};

class BotanEnd : public TlsEnd, public tls::Callbacks {
public:
    explicit BotanEnd(Shared& chosenShared) : shared(chosenShared) {}

    // A client writes its first message as it is made.
    void Handshake() override {
        if (channel) return Process();
        if (shared.role == Endpoint::kServer) {
            channel = std::make_unique<tls::Server>(*this, *shared.sessions, shared.credentials, shared.policy,
                                                    shared.random);
            return Process();
        }
        channel =
            std::make_unique<tls::Client>(*this, *shared.sessions, shared.credentials, shared.policy, shared.random,
                                          tls::Server_Information("pbx", 443), tls::Protocol_Version::TLS_V10);
    }

    bool IsComplete() override { return channel && channel->is_active(); }

    void StartOver() override { channel.reset(); }

    void Send(std::string_view data) override {
        channel->send(reinterpret_cast<const uint8_t*>(data.data()), data.size());
    }

    std::string_view Receive() override {
        Process();
        return plaintext;
    }

private:
    void Process() {
        const size_t count = wire.Read(buffer.data(), buffer.size());
        channel->received_data(reinterpret_cast<const uint8_t*>(buffer.data()), count);
    }

    void tls_emit_data(const uint8_t bytes[], size_t count) override { wire.Write(bytes, count); }

    void tls_record_received(uint64_t /*sequence*/, const uint8_t bytes[], size_t count) override {
        plaintext.assign(reinterpret_cast<const char*>(bytes), count);
    }

    void tls_alert(tls::Alert alert) override { Require(!alert.is_fatal(), "Botan's connection"); }

    bool tls_session_established(const tls::Session& /*session*/) override { return true; }

    void tls_verify_cert_chain(const std::vector<Botan::X509_Certificate>& /*chain*/,
                               const std::vector<std::shared_ptr<const Botan::OCSP::Response>>& /*responses*/,
                               const std::vector<Botan::Certificate_Store*>& /*roots*/, Botan::Usage_Type /*usage*/,
                               const std::string& /*host*/, const tls::Policy& /*policy*/) override {}

    Shared& shared;
    std::unique_ptr<tls::Channel> channel;
    ByteString plaintext;
    std::array<char, kFragmentMaxBytes + 2048> buffer;
};

class Maker : public TlsMaker {
public:
    explicit Maker(const TlsSetup& setup) : shared(setup) {}

    std::unique_ptr<TlsEnd> NewEnd() override { return std::make_unique<BotanEnd>(shared); }

    bool SendsOneRecord() const override { return false; }

private:
    Shared shared;
};

}  // namespace

// It knows no suite with RC4.
std::unique_ptr<TlsMaker> BotanMaker(const TlsSetup& setup) {
    if (!setup.suite.BlockMode()) return {};
    return std::make_unique<Maker>(setup);
}

}  // namespace velmora
