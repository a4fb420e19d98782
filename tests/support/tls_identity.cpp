#include "tests/support/tls_identity.h"

#include "crypto/trust_store.h"
#include "tests/support/file_bytes.h"

namespace velmora {
namespace {

ByteString IdentityFile(const ByteString& name) {
    return FileBytes(ByteString(VELMORA_IDENTITIES) + "/" + name + ".der");
}

}  // namespace

TlsIdentity LoadTlsIdentity(const ByteString& name) {
    return {IdentityFile(name), IdentityFile(name + "_key")};
}

ByteString ClientAuthorityCertificate() {
    return IdentityFile("authority");
}

void UseTlsIdentity(const ByteString& name) {
    const TlsIdentity identity = LoadTlsIdentity(name);
    setOwnCertificate({identity.certificate}, identity.privateKey);
}

}  // namespace velmora
