#include "tests/interop/tls_peer.h"

#include "tests/interop/gnutls_peer.h"
#include "tests/interop/openssl_peer.h"

namespace velmora::interop {

std::unique_ptr<TlsPeer> MakeTlsPeer(TlsLibrary library, const TlsPeerOptions& options) {
    if (library == TlsLibrary::kOpenSsl) return std::make_unique<OpenSslPeer>(options);
    return std::make_unique<GnuTlsPeer>(options);
}

}  // namespace velmora::interop
