#include <array>

#include "benchmarks/tls_end.h"
#include "config/clock.h"
#include "crypto/trust_store.h"
#include "tests/support/hand_clock.h"
#include "tests/support/tls_identity.h"
#include "tls/protocol.h"
#include "tls/session_cache.h"
#include "tls/tls_connection.h"

namespace velmora {
namespace {

constexpr size_t kReceivedMaxBytes = kFragmentMaxBytes + 2048;
constexpr uint64_t kUntilSessionsResumeMs = 3'600'000;

class OurEnd : public TlsEnd {
public:
    explicit OurEnd(const TlsSetup& chosenSetup) : setup(chosenSetup) { SetUp(); }

    void Handshake() override {
        if (wire.incoming.empty() && setup.role == Endpoint::kClient) connection.StartClientHandshake();
        if (!wire.incoming.empty()) connection.Feed(Received());
        Write(connection.Send({}));
    }

    bool IsComplete() override { return connection.HandshakeComplete() && !connection.Failed(); }

    void StartOver() override {
        connection.Reset();
        SetUp();
    }

    void Send(std::string_view data) override { Write(connection.Send(data)); }

    std::string_view Receive() override {
        plaintext = connection.Feed(Received());
        return plaintext;
    }

private:
    void SetUp() {
        connection.verifyCertificates = false;
        connection.resumeSessions = setup.resumes;
    }

    std::string_view Received() { return {buffer.data(), wire.Read(buffer.data(), buffer.size())}; }

    void Write(const ByteString& bytes) { wire.Write(bytes.data(), bytes.size()); }

    const TlsSetup& setup;
    TlsConnection connection;
    ByteString plaintext;
    std::array<char, kReceivedMaxBytes> buffer;
};

class Maker : public TlsMaker {
public:
    explicit Maker(const TlsSetup& chosenSetup) : setup(chosenSetup), identity(LoadTlsIdentity(setup.identity)) {}

    void Prepare() override {
        setOwnCertificate({identity.certificate}, identity.privateKey);
        // A session can be resumed once its time has come.
        handClockMs += kUntilSessionsResumeMs;
    }

    std::unique_ptr<TlsEnd> NewEnd() override { return std::make_unique<OurEnd>(setup); }

private:
    TlsSetup setup;
    TlsIdentity identity;
};

}  // namespace

std::unique_ptr<TlsMaker> OurMaker(const TlsSetup& setup) {
    return std::make_unique<Maker>(setup);
}

}  // namespace velmora
