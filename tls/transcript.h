#pragma once

#include <string_view>

#include "crypto/md5.h"
#include "crypto/sha1.h"

namespace velmora {

// The handshake messages of a connection, one behind the other, as the digests that TLS takes of them. They are not
// kept themselves: however long a peer goes on, a transcript takes the same room.
struct Transcript {
    void Append(std::string_view message) {
        md5.update(message);
        sha1.update(message);
    }

    Md5State md5;
    Sha1State sha1;
};

}  // namespace velmora
