#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// A key of HMAC (RFC 2104) over Hash, which is Md5State or Sha1State. The two pads are worked in once, so that each
// digest under the same key costs two blocks less: the PRF takes dozens, a connection one a record.
template <typename Hash>
class HmacKey {
public:
    // A key of more than 64 bytes throws std::invalid_argument.
    explicit HmacKey(std::string_view key);

    // Writes the Hash::kDigestBytes bytes of the keyed digest of all pieces, one behind the other. target may lie in a
    // piece.
    void digest(std::initializer_list<std::string_view> pieces, uint8_t* target) const;
    ByteString digest(std::initializer_list<std::string_view> pieces) const;

    // The same in steps: update what start gives with the pieces, and finish it, which uses it up.
    Hash start() const { return inner; }
    void finish(Hash& hash, uint8_t* target) const;

private:
    Hash inner;  // has taken the key's inner pad
    Hash outer;  // has taken the key's outer pad
};

}  // namespace velmora
