#include "crypto/rc4.h"

#include <cstddef>
#include <utility>

namespace velmora {

void rc4SetKey(Rc4State& state, const ByteString& key) {
    state.i = 0;
    state.j = 0;
    for (uint32_t k = 0; k < 256; ++k) state.s[k] = k;
    uint32_t x = 0;
    for (uint32_t k = 0; k < 256; ++k) {
        const uint32_t keyByte = key.empty() ? 0 : static_cast<unsigned char>(key[k % key.size()]);
        x = (x + state.s[k] + keyByte) % 256;
        std::swap(state.s[k], state.s[x]);
    }
}

ByteString rc4Process(Rc4State& state, const ByteString& data) {
    ByteString output = data;
    uint32_t i = state.i;
    uint32_t j = state.j;
    for (char& byte : output) {
        i = (i + 1) % 256;
        const uint32_t atI = state.s[i];
        j = (j + atI) % 256;
        const uint32_t atJ = state.s[j];
        state.s[i] = atJ;
        state.s[j] = atI;
        byte = static_cast<char>(static_cast<uint32_t>(byte) ^ state.s[(atI + atJ) % 256]);
    }
    state.i = i;
    state.j = j;
    return output;
}

}  // namespace velmora
