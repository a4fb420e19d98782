// A client that is given any bytes at any stage of the handshake, with or without looking at certificates and names;
// perhaps behind a well-signed certificate, whose name is the one it expects or nearly so.
#include "config/ascii_case.h"
#include "crypto/sha1.h"
#include "crypto/trust_store.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/tls_stages.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tls/wire.h"

namespace velmora {
namespace {

constexpr const char* kRootName = "Hand Made Root";

bool TrustRoot() {
    HandMadeCertificate root;
    root.subject = nameContent(kRootName);
    trustCertificate(root.der());
    return trustStore.back().modulus.size() >= kModulusMinBytes;
}

// The key of the root has the exponent 1, so that a signature is what it signs; the 1 in front keeps a digest's zeros.
ByteString CertificateFor(const ByteString& name) {
    HandMadeCertificate leaf;
    leaf.issuer = nameContent(kRootName);
    leaf.subject = nameContent(name);
    leaf.signature = "\x01" + sha1Digest(leaf.tbs());
    return leaf.der();
}

// Any name; or the end of the domain, from any place on and behind a wildcard or none, perhaps in capitals.
ByteString NameFrom(FuzzInput& input, const ByteString& domain) {
    static const char* const kStarts[] = {"", "*", "*.", "w*."};
    const unsigned kind = input.U8();
    if (kind % 4 == 0) return input.Piece();
    ByteString name = kStarts[kind / 4 % 4] + domain.substr(input.U8() % (domain.size() + 1));
    for (char& byte : name) {
        if (kind % 4 == 1 && byte >= 'a' && byte <= 'z') byte = static_cast<char>(byte - 'a' + 'A');
    }
    return name;
}

// The rules once more: a name stands for itself; and "*.base" for base and everything below it, which is each domain
// of which base is left when labels are taken off its front.
bool StandsFor(const ByteString& name, const ByteString& domain) {
    if (name == domain) return true;
    if (!name.starts_with("*.")) return false;
    const ByteString base = name.substr(2);
    for (size_t label = 0; label != ByteString::npos;) {
        if (domain.substr(label) == base) return true;
        const size_t dot = domain.find('.', label);
        label = dot == ByteString::npos ? dot : dot + 1;
    }
    return false;
}

void ShowCertificate(TlsConnection& client, KeyedPeer& server, FuzzInput& input) {
    const ByteString domain = input.Piece();
    const ByteString name = NameFrom(input, domain);
    client.SetExpectedDomain(domain);
    client.verifyCertificates = true;
    const ByteString list = WireWriter().Bytes24(CertificateFor(name)).Written();
    client.Feed(server.Message(HandshakeType::kCertificate, WireWriter().Bytes24(list).Written()));
    const bool taken = domain.empty() || StandsFor(LowerCase(name), LowerCase(domain));
    Expect(client.Failed() != taken, "a certificate is taken if its name stands for the domain");
    Expect(!taken || client.KeyExchangeCertificate().commonName == name, "a certificate that is taken is kept");
}

}  // namespace
}  // namespace velmora

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput input(data, bytes);
    const bool showsCertificate = bytes > 0 && data[0] >= 128;  // the byte that names the stage
    TlsStage stage = StageOf(ClientStages(), input);
    static const bool trusted = TrustRoot();
    Expect(trusted, "the root is trusted");
    TlsConnection& client = stage.end;
    const uint8_t choices = input.U8();
    client.verifyCertificates = choices % 2 != 0;
    if (choices / 2 % 2 != 0) client.SetExpectedDomain("pbx.velmora.example");
    if (showsCertificate) ShowCertificate(client, stage.peer, input);
    FeedInPieces(client, 1U + choices, input);
    return 0;
}
