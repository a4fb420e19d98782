#pragma once

#include <nspr.h>

#include <cstdint>

#include "tests/interop/tls_peer.h"

namespace velmora::interop {

// NSS as a client of SSL 3.0 alone, which it still speaks. The options' suites are all there; a certificate of its own
// and longest records are not.
class NssPeer : public TlsPeer {
public:
    // The role must be that of a client.
    explicit NssPeer(const TlsPeerOptions& peerOptions);
    ~NssPeer() override;
    NssPeer(const NssPeer&) = delete;
    NssPeer& operator=(const NssPeer&) = delete;

    void Restart() override;
    ByteString Take(std::string_view fromNetwork) override;
    void Write(std::string_view plaintext) override;
    void AskForRenegotiation() override {}  // a server's
    void Close() override;
    TlsPeerState State() const override;
    ByteString Read() override;

private:
    friend struct NssCallbacks;

    void ReadAll();
    bool Succeeded(int32_t result);

    TlsPeerOptions options;
    PRFileDesc* connection = nullptr;
    ByteString incoming;  // from the network, and not yet taken by NSS
    ByteString outgoing;  // from NSS, and not yet for the network
    TlsPeerState state;
};

}  // namespace velmora::interop
