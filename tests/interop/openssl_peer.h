#pragma once

#include <openssl/ssl.h>

#include <memory>

#include "tests/interop/tls_peer.h"

namespace velmora::interop {

// OpenSSL, with everything allowed that it has long ceased to advise.
class OpenSslPeer : public TlsPeer {
public:
    explicit OpenSslPeer(const TlsPeerOptions& peerOptions);
    OpenSslPeer(const OpenSslPeer&) = delete;
    OpenSslPeer& operator=(const OpenSslPeer&) = delete;

    void Restart() override;
    ByteString Take(std::string_view fromNetwork) override;
    void Write(std::string_view plaintext) override;
    void AskForRenegotiation() override;
    void Close() override;
    TlsPeerState State() const override;
    ByteString Read() override;

private:
    struct Freer {
        void operator()(SSL_CTX* object) const { SSL_CTX_free(object); }
        void operator()(SSL* object) const { SSL_free(object); }
        void operator()(SSL_SESSION* object) const { SSL_SESSION_free(object); }
    };

    static void OnEvent(const SSL* connection, int where, int value);
    void UseIdentity();
    void UseTrusted();
    void ReadAll();
    bool Succeeded(int result);

    TlsPeerOptions options;
    std::unique_ptr<SSL_CTX, Freer> context;
    std::unique_ptr<SSL, Freer> connection;
    std::unique_ptr<SSL_SESSION, Freer> session;  // a client's, to be resumed
    TlsPeerState state;
};

}  // namespace velmora::interop
