#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// The RC4 stream cipher, for the TLS suites of that name. One state serves one direction of one connection; it goes on
// from call to call. Encrypting and decrypting are the same.

struct Rc4State {
    uint32_t i = 0;
    uint32_t j = 0;
    uint32_t s[256] = {};  // a permutation of 0 to 255, once a key is set
};

// Starts a stream with a key of any length, used in full. An empty key counts as a key of one zero byte.
void rc4SetKey(Rc4State& state, const ByteString& key);

// The next bytes of the stream over data: as many as data has.
ByteString rc4Process(Rc4State& state, const ByteString& data);

}  // namespace velmora
