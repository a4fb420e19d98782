#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "config/byte_string.h"
#include "tools/pbxsim/client.h"
#include "tools/pbxsim/tls_link.h"

namespace velmora::pbxsim {

// What the bytes of a client are on their way.
enum class Encryption {
    kNone,
    kTls,
    kTlsRefused,  // every TLS handshake is refused
};

// What a turn of a channel gives.
struct ChannelOutput {
    std::vector<ByteString> chunks;  // to be sent, in this order
    std::vector<ByteString> lines;   // to be printed
    bool hangUp = false;             // close the connection once the chunks are sent; nothing follows
};

// A client of the PBX as its socket sees it: the client itself, and TLS in front of it if there is any.
class Channel {
public:
    Channel(Pbx& pbx, Encryption encryption);

    // Takes bytes from the socket, however they were cut.
    void Receive(const ByteString& bytes, uint64_t nowMs);

    // What has come together since the last call, and what is due by now.
    ChannelOutput TakeOutput(uint64_t nowMs);

    // When TakeOutput has something next by the clock alone; none when nothing waits.
    std::optional<uint64_t> NextDueMs() const;

private:
    Client client;
    std::optional<TlsLink> tls;
    bool hungUp = false;
};

}  // namespace velmora::pbxsim
