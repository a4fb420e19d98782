#pragma once

#include <gnutls/gnutls.h>

#include <map>
#include <memory>
#include <type_traits>

#include "tests/interop/tls_peer.h"

namespace velmora::interop {

// GnuTLS, with everything allowed that it has long ceased to advise.
class GnuTlsPeer : public TlsPeer {
public:
    explicit GnuTlsPeer(const TlsPeerOptions& peerOptions);
    GnuTlsPeer(const GnuTlsPeer&) = delete;
    GnuTlsPeer& operator=(const GnuTlsPeer&) = delete;

    void Restart() override;
    ByteString Take(std::string_view fromNetwork) override;
    void Write(std::string_view plaintext) override;
    void AskForRenegotiation() override;
    void Close() override;
    TlsPeerState State() const override;
    ByteString Read() override;

private:
    struct Freer {
        void operator()(gnutls_session_t object) const { gnutls_deinit(object); }
        void operator()(gnutls_certificate_credentials_t object) const { gnutls_certificate_free_credentials(object); }
    };
    template <typename Handle>
    using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Freer>;

    static ssize_t Pull(gnutls_transport_ptr_t self, void* target, size_t most);
    static ssize_t Push(gnutls_transport_ptr_t self, const void* bytes, size_t count);
    static int StoreSession(void* self, gnutls_datum_t id, gnutls_datum_t data);
    static gnutls_datum_t FetchSession(void* self, gnutls_datum_t id);
    static int RemoveSession(void* self, gnutls_datum_t id);
    static int Verify(gnutls_session_t session);

    void UseIdentity();
    void UseTrusted();
    void SetUpClient();
    void SetUpServer();
    void ReadAll();
    bool Succeeded(ssize_t result);

    TlsPeerOptions options;
    Owned<gnutls_certificate_credentials_t> credentials;
    Owned<gnutls_session_t> session;
    std::map<ByteString, ByteString> stored;  // a server's sessions by their ID
    ByteString resumable;                     // a client's session, to be resumed
    ByteString incoming;                      // from the network, and not yet pulled
    ByteString outgoing;                      // pushed, and not yet for the network
    TlsPeerState state;
};

}  // namespace velmora::interop
